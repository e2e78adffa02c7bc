01 fr-name pic x value "R".
01
  fr-2 pic x(3)
    value "TWO".
