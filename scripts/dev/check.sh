# ./dev check: formatting, linting, type checks. Runs all of them, then fails if one did.

# shellcheck disable=SC2086
need_packages $library_packages $test_packages git clang-format clang-tidy
need_web_packages

bad=

# check NAME COMMAND...
check() {
  name=$1
  shift
  say "checking: $name"
  "$@" || {
    say "not well: $name"
    bad="$bad, $name"
  }
}

# Files of this checkout, those not added yet included.
our_files() { git ls-files --cached --others --exclude-standard "$@"; }

check_format() {
  our_files '*.h' '*.cpp' | xargs -r clang-format --dry-run -Werror
}

# The library's rooms only: clang-tidy takes seconds for each file.
check_tidy() {
  cmake --preset debug --log-level=WARNING >/dev/null
  mkdir -p build/tidy
  # Clang refuses the options that only GCC has.
  sed 's/ -fno-lifetime-dse//g' build/debug/compile_commands.json >build/tidy/compile_commands.json
  our_files 'source/*.cpp' 'component/*.cpp' 'trace/*.cpp' 'platform/*.cpp' |
    grep -v '/windows/' |
    xargs -r -n 1 -P 2 clang-tidy -p build/tidy --quiet 2>build/tidy/errors.log || {
    grep -v 'warnings.* generated\.$' build/tidy/errors.log >&2
    return 1
  }
}

# Platform code has its own rooms; component/ may ask only where it declares its exports.
check_platform_conditions() {
  condition='^[[:space:]]*#[[:space:]]*(if|ifdef|ifndef|elif).*\<(_WIN32|_WIN64|WIN32|__MINGW32__|_MSC_VER|__linux__|__unix__|__APPLE__)\>'
  our_files '*.h' '*.cpp' |
    grep -v -E '^(platform|host)/|^component/[^/]*export[^/]*\.h$' |
    xargs -r grep -n -E "$condition" >&2 || return 0
  return 1
}

# An include folder shows what a room may see; a way upwards leads past all of them.
check_ways_upwards() {
  our_files '*.h' '*.cpp' | xargs -r grep -n -E '^[[:space:]]*#[[:space:]]*include "\.\./' >&2 || return 0
  return 1
}

check_pages() { (cd web && npm run --silent check) </dev/null; }

check_generated() { (set -- --check && . scripts/dev/generate.sh); }

check 'formatting' check_format
check 'clang-tidy' check_tidy
check 'platform conditions' check_platform_conditions
check 'includes by "../"' check_ways_upwards
check 'pages' check_pages
check 'generated files' check_generated

[ -z "$bad" ] || die "these checks failed:${bad#,}"
say 'all checks passed'
