# ./dev run [flags]: bridgehost in the foreground, so that Ctrl-C reaches it.

# shellcheck disable=SC2086
need_packages $library_packages
build release bridgehost imsdkbridge
build_web
exec build/release/bin/bridgehost "$@"
