# ./dev generate: what is made from the library's tables: the page client's types, the reference.

# shellcheck disable=SC2086
need_packages $library_packages
need_node
build debug bridgehost imsdkbridge
BRIDGEHOST="$PWD/build/debug/bin/bridgehost" exec node web/scripts/generate.mjs "$@"
