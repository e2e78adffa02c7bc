           SAME AREA TF TF2.
