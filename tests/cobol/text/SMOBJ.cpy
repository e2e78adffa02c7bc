           XXXXX083.
