#!/bin/sh
# wine-run.sh PROGRAM [arguments]: one Windows program under Wine. CMake gives it the tests.
set -eu
if [ -z "${IMSDK_WINE_ROOT:-}" ]; then
  echo 'Windows programs run through ./dev windows, which prepares Wine' >&2
  exit 1
fi
folder=$PWD
[ -d "$IMSDK_WINE_ROOT$folder" ] || folder=/
exec chroot "$IMSDK_WINE_ROOT" \
  env --chdir="$folder" HOME=/root LANG=C.UTF-8 WINEDEBUG=-all wine "$@"
