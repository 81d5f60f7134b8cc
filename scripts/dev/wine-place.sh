# wine-place.sh FOLDER COMMAND..., as root, IMSDK_WINE_ROOT set: runs the command where Wine's root
# has /proc and, under the same path, the folder (when there is one). Mounts and processes are in
# namespaces of their own: all of them, Wine's server too, end with the command.
set -eu
# shellcheck disable=SC2016
exec unshare --mount --pid --fork --kill-child --mount-proc sh -euc '
  mount -t proc proc "$IMSDK_WINE_ROOT/proc"
  if [ -d "$1" ]; then
    mkdir -p "$IMSDK_WINE_ROOT$1"
    mount --bind "$1" "$IMSDK_WINE_ROOT$1"
  fi
  shift
  "$@"
' sh "$@"
