#!/usr/bin/env bash
# The Debian packages are whole: all three are made and looked over by lintian, unpacked side by side, and the worked
# program is compiled against them alone, with pkg-config as well as with CMake, and run. It finds its messages, file
# systems and sort engine inside the packages; kvrcob finds library and headers there.
#
#   package_test.sh BUILD
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
unset LD_LIBRARY_PATH NLSPATH CMAKE_PREFIX_PATH
export LC_ALL=C

(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
for package in "$work"/packages/*.deb; do dpkg-deb -x "$package" "$root"; done
[ "$(ls "$work"/packages/*.deb | wc -l)" = 3 ] || { echo "not three packages"; exit 1; }

# The owner has not chosen a licence yet, so there is no copyright file.
chmod 755 "$work"
lintian --allow-root --suppress-tags no-copyright-file "$work"/packages/*.deb >"$work/lintian.log" 2>&1 || true
! grep -q '^[EW]:' "$work/lintian.log" || { cat "$work/lintian.log"; exit 1; }
dpkg-deb -I "$work"/packages/libkvr2_*.deb symbols | grep -q '^ _zvkPgmInit@KVR2_5.1.0 6' || { echo "no symbols file"; exit 1; }
[[ $(dpkg-deb -f "$work"/packages/libkvr2_*.deb Depends) = *libicu* ]] || { echo "the runtime package does not depend on ICU"; exit 1; }

# Nothing of the build or the source may be needed.
examples=$root/usr/share/kvr2/examples
export PKG_CONFIG_PATH=$root/usr/lib/pkgconfig PKG_CONFIG_SYSROOT_DIR=$root
[ "$(PKG_CONFIG_SYSROOT_DIR='' pkg-config --cflags --libs kvr2)" = '-lkvr2_64r ' ] || { echo "pkg-config names paths of the system"; exit 1; }
# shellcheck disable=SC2046
cc "$examples/sumup/sumup.c" $(pkg-config --cflags --libs kvr2) -Wl,-rpath,"$root/usr/lib" -o "$work/sumup"
printf '000012345\n00000010p\n' >"$work/amounts.txt"
shown=$(AMOUNTS=lsq-$work/amounts.txt "$work/sumup")
[ "$shown" = 'TOTAL         $122.45  ' ] || { echo "wrong total: '$shown'"; exit 1; }
[[ $(ldd "$work/sumup") = *"$root/usr/lib/libkvr2_64r.so"* ]] || { echo "the library is not the package's"; exit 1; }

printf '00000\xff345\n' >"$work/amounts.txt"
status=0
COBOL_BCD_SAFE=1 AMOUNTS=lsq-$work/amounts.txt "$work/sumup" >"$work/out" 2>"$work/err" || status=$?
grep -q 'ZVK903S  A packed or zoned' "$work/err" || { echo "the packages' messages are not found:"; cat "$work/err"; exit 1; }

cmake -S "$examples/sumup" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$root/usr" >"$work/cmake.log" && cmake --build "$work/cmake" >>"$work/cmake.log" ||
    { cat "$work/cmake.log"; exit 1; }
printf '00000500p\n' >"$work/amounts.txt"
shown=$(AMOUNTS=lsq-$work/amounts.txt "$work/cmake/sumup")
[ "$shown" = 'TOTAL          $50.00CR' ] || { echo "wrong total of CMake's program: '$shown'"; exit 1; }

"$root/usr/bin/kvr2-gdg" --help >/dev/null
"$root/usr/bin/kvr2-explain" 200 | grep -q 'What to do' || { echo "kvr2-explain does not find its page"; exit 1; }

# The front end, from its package.
printf '       PROGRAM-ID. HI.\n       PROCEDURE DIVISION.\n           DISPLAY "HI" UPON CONSOLE.\n' >"$work/hi.cbl"
shown=$(XDG_CACHE_HOME=$work "$root/usr/bin/kvrcob" run "$work/hi.cbl")
[ "$shown" = HI ] || { echo "kvrcob from its package: '$shown'"; exit 1; }
for page in "$root"/usr/share/man/man?/*; do
    [ -z "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)" ] || { echo "the manual page $page has faults"; exit 1; }
done
for completion in "$root"/usr/share/bash-completion/completions/*; do
    bash -c 'source "$1" && complete -p "${1##*/}" >/dev/null' - "$completion" || { echo "completion of $completion"; exit 1; }
done
echo "the packages are whole"
