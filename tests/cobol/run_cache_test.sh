#!/usr/bin/env bash
# kvrcob run and its cache. Catches: a program that is another one's, one that somebody else may have put there, a
# cache that grows for ever, one where none can be.
#
#   run_cache_test.sh KVRCOB
source "$(dirname "$0")/says.sh"
programs() { find "$work/cache/kvrcob" -type f | wc -l; }

says 0 hello "$kvrcob" run -O0 h.cbl
[ "$(programs)" = 1 ] || fails 'the program is not kept'
[ "$(stat -c %a "$work/cache/kvrcob")" = 700 ] || fails 'others may look into the cache'
[[ $("$kvrcob" -O0 --list run h.cbl) = *'Program HELLO'*hello ]] || fails 'the listing is lost'
[ "$(programs)" = 1 ] || fails 'the program is made anew'

# What a program is made of: the compiler, objects of one name with other contents.
printf '#!/bin/sh\nexec %s "$@"\n' "${CC:-cc}" >mycc
chmod +x mycc
says 0 hello env CC=./mycc "$kvrcob" run -O0 h.cbl
[ "$(programs)" = 2 ] || fails 'the C compiler does not count'
sed 's/stop run/call "other". stop run/' h.cbl >main.cbl
for place in one two; do
    mkdir $place
    sed "s/hello\\./other./; s/hello/$place/; s/stop run/exit program/" h.cbl >$place/other.cbl
    cp main.cbl $place
    cd $place
    "$kvrcob" -O0 -c other.cbl
    says 0 $place "$kvrcob" run -O0 other.o main.cbl
    cd ..
done

# What is in the cache under the program's name, but is not it, is neither run nor followed.
rm -r "$work/cache"
says 0 hello "$kvrcob" run -O0 h.cbl
program=$(find "$work/cache/kvrcob" -type f)
: >"$program"
says 0 hello "$kvrcob" run -O0 h.cbl
printf '#!/bin/sh\necho wrong\n' >wrong
chmod +x wrong
ln -sf "$PWD/wrong" "$program"
says 0 hello "$kvrcob" run -O0 h.cbl
says 0 wrong ./wrong

# A cache that others may write in is none.
mv wrong "$program"
chmod 777 "$work/cache/kvrcob"
says 0 hello "$kvrcob" run -O0 h.cbl
chmod 700 "$work/cache/kvrcob"
chmod 777 "$work/cache"
says 0 hello "$kvrcob" run -O0 h.cbl
chmod 1777 "$work/cache"
says 0 wrong "$kvrcob" run -O0 h.cbl

# No place for one.
for home in /dev/null relative ''; do
    says 0 hello env XDG_CACHE_HOME="$home" HOME=/dev/null "$kvrcob" run -O0 h.cbl
    says 0 hello env -u XDG_CACHE_HOME HOME="$home" "$kvrcob" run -O0 h.cbl
done
says 0 hello env -u XDG_CACHE_HOME -u HOME "$kvrcob" run -O0 h.cbl
[ ! -e relative ] || fails 'a relative folder became a cache'

# What nobody has run for a month goes, what was run lately stays.
touch -d '40 days ago' "$work/cache/kvrcob/old" "$program"
says 0 wrong "$kvrcob" run -O0 h.cbl
says 0 hello env CC=./mycc "$kvrcob" run -O0 h.cbl
[ ! -e "$work/cache/kvrcob/old" ] && [ -e "$program" ] || fails 'the wrong programs were removed'

nothing_left kvrcob
exit $failed
