# For the tests of the command: a folder of their own, and what the command says. Sourced with KVRCOB as $1.
set -uo pipefail
kvrcob=$(realpath "$1")
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
export LC_ALL=C XDG_CACHE_HOME=$work/cache TMPDIR=$work/tmp
unset COBCPY
mkdir "$work/tmp" "$work/tree"
cd "$work/tree"
failed=0

fails() {
    echo "FAILED: $*"
    failed=1
}

# says STATUS TEXT COMMAND...: the command ends with the status, and its output or message has the text.
says() {
    local status=$1 text=$2 said got
    shift 2
    said=$("$@" 2>&1 </dev/null)
    got=$?
    if [ $got != "$status" ] || [[ $said != *"$text"* ]]; then
        fails "$* gave $got, expected $status and '$text':"
        echo "$said"
    fi
}

# nothing_left PATTERN: no temporary file is left, nor anything here whose name has the pattern.
nothing_left() {
    local left
    left=$(ls -A "$TMPDIR"; ls -A | grep -E "$1")
    [ -z "$left" ] || fails "left over: $left"
}

printf '%s\n' 'identification division.' 'program-id. hello.' 'procedure division.' '    display "hello".' '    stop run.' >h.cbl
