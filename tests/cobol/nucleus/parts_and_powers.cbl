identification division.
program-id. parts-and-powers.
data division.
working-storage section.
01 bin pic s9(8) comp-5 value 855249.
01 pck pic s9(5) comp-3 value -42.
01 scaled pic s9(3)pp comp-5 value -12300.
01 text-20 pic x(20) value all ".".
01 whole pic 9(4).
01 money pic zz9.
01 rest pic x(5).
01 huge pic 9(38) comp-3.
01 n unsigned-int value 4000000000.
01 m signed-short value -5.
01 chunk based.
   03 word-5 pic x(5).
procedure division.
main.
    *> Numbers to a part of a text are digits there, whatever their form.
    move bin to text-20(2:3)
    move pck to text-20(6:7)
    move scaled to text-20(14:)
    display text-20

    *> Without delimiters each item takes its own length.
    unstring "1234567ab" into whole money rest
    display whole "|" money "|" rest "|"

    compute huge = 2 ** 100
    display huge
    compute huge = (2 ** 127 - 1) / 10
    display huge
    display n " " m

    allocate chunk
    move "based" to word-5
    display word-5
    free chunk
    if address of chunk = null display "freed" end-if
    stop run.
