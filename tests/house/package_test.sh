#!/usr/bin/env bash
# The Debian packages are whole: both are made, unpacked side by side, and the worked program is compiled against them alone, with pkg-config as well as with
# CMake, and run. It finds its messages, file systems and sort engine inside the packages.
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
[ "$(ls "$work"/packages/*.deb | wc -l)" = 2 ] || { echo "not two packages"; exit 1; }
[[ $(dpkg-deb -f "$work"/packages/libkvr2_*.deb Depends) = *libicu* ]] || { echo "the runtime package does not depend on ICU"; exit 1; }

# Nothing of the build or the source may be needed.
examples=$root/usr/share/kvr2/examples
export PKG_CONFIG_PATH=$root/usr/lib/pkgconfig
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
