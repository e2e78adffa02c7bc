      * a comment in column 7
       01 fx pic x value "F".                                           ignored
