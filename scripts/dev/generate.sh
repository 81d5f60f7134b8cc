# ./dev generate: what is made from the library's tables: the page client's types, the reference.
# `--examples` runs the end-to-end tests first and takes the reference's examples from them;
# `--check` writes nothing and fails when something is stale.

# shellcheck disable=SC2086
need_packages $library_packages
need_node
build debug bridgehost imsdkbridge || die 'bridgehost cannot be built'
BRIDGEHOST="$PWD/build/debug/bin/bridgehost"
export BRIDGEHOST
if [ "${1:-}" = --examples ]; then
  shift
  # shellcheck disable=SC2086
  need_packages $browser_packages
  need_web_packages
  (cd web && npm run e2e -- --examples) </dev/null >&2 || die 'the end-to-end tests fail'
fi
node web/scripts/generate.mjs "$@"
