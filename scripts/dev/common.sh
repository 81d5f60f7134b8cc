# What every command of ./dev shares: messages, root rights, Debian packages, builds.

library_packages='g++ cmake ninja-build ccache pkg-config libboost-dev rapidjson-dev libsqlite3-dev
  libspdlog-dev libfmt-dev libsodium-dev libssl-dev libpng-dev libutf8proc-dev ca-certificates'
test_packages='libgtest-dev libgmock-dev libbenchmark-dev'
browser_packages='chromium fonts-noto-color-emoji fonts-noto-cjk'

# Progress goes to standard error: standard output belongs to the programs that ./dev starts.
say() { printf '== %s\n' "$*" >&2; }

die() {
  printf 'dev: %s\n' "$*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "this needs root rights, and there is no sudo: $*"
  fi
}

is_installed() {
  case $(dpkg-query -W -f='${Status}' "$1" 2>/dev/null) in
    *' ok installed') return 0 ;;
    *) return 1 ;;
  esac
}

# need_packages NAME...: installs those that are missing; asks nobody when none is.
need_packages() {
  missing=
  for package in "$@"; do
    is_installed "$package" || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  command -v apt-get >/dev/null || die "no apt-get here to install:$missing"
  say "installing Debian packages:$missing"
  as_root apt-get -q update >&2 || say 'some package lists could not be refreshed; going on'
  # shellcheck disable=SC2086
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y --no-install-recommends install $missing </dev/null >&2 ||
    die "the packages could not be installed:$missing"
}

# Any Node from version 18 will do, wherever it came from; else Debian's own.
need_node() {
  if command -v npm >/dev/null; then
    major=$(node -p 'parseInt(process.versions.node)' 2>/dev/null) || major=0
    [ "$major" -lt 18 ] || return 0
  fi
  need_packages nodejs npm
}

# build PRESET [TARGET...]
build() {
  preset=$1
  shift
  say "building: $preset"
  cmake --preset "$preset" --log-level=WARNING >/dev/null
  if [ $# -gt 0 ]; then
    set -- --target "$@"
  fi
  cmake --build --preset "$preset" --parallel "$(nproc)" "$@" >&2
}

# The page packages, installed when the lock file is newer than what is installed.
need_web_packages() {
  need_node
  installed=web/node_modules/.package-lock.json
  if [ ! -e "$installed" ] || [ -n "$(find web/package-lock.json -newer "$installed")" ]; then
    say 'installing the page packages'
    (cd web && npm ci --no-audit --no-fund) </dev/null >&2
  fi
}

# The pages, built when one of their files is newer than the last build.
build_web() {
  need_web_packages
  stamp=build/web.stamp
  if [ -e "$stamp" ] && [ -d web/dist ]; then
    changed=$(find web \( -name node_modules -o -name dist \) -prune -o -newer "$stamp" -print)
    [ -n "$changed" ] || return 0
  fi
  say 'building the pages'
  mkdir -p build
  touch "$stamp.new"
  (cd web && npm run build) </dev/null >&2
  mv "$stamp.new" "$stamp"
}
