# Wine for ./dev windows: a small i386 Debian of its own, made from the main suite alone, so that
# it fits together whatever the machine itself has installed. It stays in the user's cache folder.

suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
wine_root=${XDG_CACHE_HOME:-$HOME/.cache}/imsdkbridge/wine-$suite-i386

# Where this machine's own apt gets the suite from; IMSDK_MIRROR names another place.
find_mirror() {
  [ -z "${IMSDK_MIRROR:-}" ] || { echo "$IMSDK_MIRROR" && return; }
  # shellcheck disable=SC2016
  apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' 'Identifier: Packages' |
    awk -v suite="$suite" '$1 == suite && $2 == "main" { print $3; exit }'
}

# Makes the root under a temporary name first: what bears the final name is whole.
prepare_wine() {
  [ ! -d "$wine_root" ] || return 0
  need_packages debootstrap
  mirror=$(find_mirror)
  [ -n "$mirror" ] || die "Wine cannot be had: apt knows no place for the suite $suite; name one in IMSDK_MIRROR"
  eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
  say "preparing Wine in $wine_root (once; some minutes, about 1.5 GB)"
  part=$wine_root.part
  mkdir -p "${wine_root%/*}" build
  as_root rm -rf --one-file-system "$part"
  as_root env http_proxy="${http_proxy:-}" sh scripts/dev/make-wine-root.sh "$suite" "$part" "$mirror" \
    >build/wine-root.log 2>&1 || {
    tail -n 20 build/wine-root.log >&2
    die 'Wine cannot be had on this machine, so the Windows tests cannot run; the whole log is build/wine-root.log'
  }
  as_root mv "$part" "$wine_root"
}

# in_wine COMMAND...: runs it where Wine sees the build folder under its own path.
in_wine() {
  as_root env IMSDK_WINE_ROOT="$wine_root" sh scripts/dev/wine-place.sh "$PWD/build/windows" "$@"
}
