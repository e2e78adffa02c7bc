           SAME AREA FOR TFIL.
