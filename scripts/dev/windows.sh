# ./dev windows: the library as it ships, tested as 32-bit Windows processes under Wine.

. scripts/dev/totals.sh
. scripts/dev/wine.sh

need_packages cmake ninja-build ccache rapidjson-dev ca-certificates googletest \
  g++-mingw-w64-i686-posix zip
build windows
prepare_wine

bin=build/windows/bin
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
  for program in "$bin"/*.dll "$bin"/embed.exe; do
    ! headers_of "$program" | grep -E 'DLL Name: lib.*\.dll' >&2 || return 1
  done
}

run_example() { in_wine scripts/dev/wine-run.sh "$PWD/$bin/embed.exe"; }

# count_step NAME COMMAND...: one check that counts like a test.
count_step() {
  name=$1
  shift
  say "testing: $name"
  if "$@"; then add_totals "$name" 1 0 0; else add_totals "$name" 0 1 0; fi
}

make_package() {
  package=build/windows/imsdkbridge
  rm -rf "$package" build/imsdkbridge-windows.zip
  mkdir -p "$package/bin" "$package/lib"
  cp "$bin"/*.dll "$bin/embed.exe" "$package/bin/"
  cp build/windows/lib/*.dll.a "$package/lib/"
  cp -R include examples "$package/"
  cp docs/windows-package.txt "$package/README.txt"
  (cd build/windows && zip -q -r -X ../imsdkbridge-windows.zip imsdkbridge)
  say 'made build/imsdkbridge-windows.zip'
}

in_test_place() { shift && in_wine "$@"; }

count_step 'exported symbols' check_exports
count_step 'no compiler libraries' check_imports
run_ctest windows
[ "$(id -u)" -eq 0 ] || as_root chown -R "$(id -u):$(id -g)" build/windows
count_step 'example program' run_example
make_package

print_totals
