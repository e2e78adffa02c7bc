           XXXXX082.
