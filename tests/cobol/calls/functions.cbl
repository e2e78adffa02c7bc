*> Functions that the source defines: recursion, conversions of arguments, ANY LENGTH.
identification division.
program-id. udf.
environment division.
configuration section.
repository.
    function all intrinsic
    function add-tax
    function full-name.
data division.
working-storage section.
01 amt pic 9(5)v99 value 100.
01 res pic 9(5)v99.
01 nm pic x(30).
procedure division.
    move add-tax(amt) to res
    display res
    compute res = add-tax(50) + 1
    display res
    move full-name("John" "Smith") to nm
    display nm
    if add-tax(amt) > 100 display "more" end-if
    stop run.
end program udf.

identification division.
function-id. add-tax.
data division.
working-storage section.
01 rate pic v99 value .10.
linkage section.
01 a pic 9(5)v99.
01 r pic 9(5)v99.
procedure division using a returning r.
    compute r = a * (1 + rate)
    goback.
end function add-tax.
identification division.
function-id. full-name.
data division.
linkage section.
01 f pic x any length.
01 l pic x any length.
01 r pic x(20).
procedure division using f l returning r.
    string f delimited by space " " l delimited by space into r
    end-string
    goback.
end function full-name.
