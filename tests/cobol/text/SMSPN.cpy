           CONSOLE IS CONS-X.
