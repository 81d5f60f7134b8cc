# ./dev windows: the library as it ships, tested as 32-bit Windows processes under Wine.

. scripts/dev/totals.sh
. scripts/dev/wine.sh

need_packages cmake ninja-build ccache rapidjson-dev ca-certificates googletest \
  g++-mingw-w64-i686-posix zip
build windows
prepare_wine

bin=build/windows/bin
package=build/windows/imsdkbridge
headers_of() { i686-w64-mingw32-objdump -p "$1"; }

# The export table holds exactly one name.
check_exports() {
  exports=$(headers_of "$bin/imsdkbridge.dll" |
    awk '/\[Ordinal\/Name Pointer\] Table/ { table = 1; next } table && !NF { exit } table { print $NF }')
  say "exports of imsdkbridge.dll: $exports"
  [ "$exports" = GetKexCOMFactory ]
}

# Nothing needs a library of the compiler's own.
check_imports() {
  for program in "$package"/bin/*; do
    ! headers_of "$program" | grep -E 'DLL Name: lib.*\.dll' >&2 || return 1
  done
}

run_example() { in_wine scripts/dev/wine-run.sh "$PWD/$package/bin/embed.exe"; }

collect_package() {
  rm -rf "$package" build/imsdkbridge-windows.zip
  cmake --install build/windows --prefix "$package" >/dev/null
  cp -R examples/embed "$package/examples"
  cp docs/windows-package.txt "$package/README.txt"
}

# The package is enough: its example is built from it, by the command that its README gives.
build_example() {
  (
    cd "$package"
    sed -n 's/^    //p' README.txt | sh -eu
  )
}

# The same with CMake, from the package's copy in another place.
build_example_with_cmake() {
  place=build/windows/by-cmake
  rm -rf "$place"
  mkdir -p "$place"
  cp -R "$package" "$place/sdk"
  cmake -S "$place/sdk/examples" -B "$place/build" --toolchain "$PWD/cmake/toolchain-mingw-i686.cmake" \
    -Dimsdkbridge_DIR="$PWD/$place/sdk/lib/cmake/imsdkbridge" >/dev/null &&
    cmake --build "$place/build" >&2 &&
    in_wine scripts/dev/wine-run.sh "$PWD/$place/build/embed.exe"
}

in_test_place() { shift && in_wine "$@"; }

count_step 'exported symbols' check_exports
run_ctest windows
[ "$(id -u)" -eq 0 ] || as_root chown -R "$(id -u):$(id -g)" build/windows

collect_package
count_step 'example built from the package' build_example
count_step 'no compiler libraries' check_imports
count_step 'example program' run_example
count_step 'example built with CMake' build_example_with_cmake
(cd build/windows && zip -q -r -X ../imsdkbridge-windows.zip imsdkbridge)
say 'made build/imsdkbridge-windows.zip'

print_totals
