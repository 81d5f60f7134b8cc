# ./dev test: every test there is. Goes on after a failure and ends with the true totals.

. scripts/dev/totals.sh

# shellcheck disable=SC2086
need_packages $library_packages $test_packages $browser_packages
need_web_packages
build_web

build debug
run_ctest debug

build asan
run_ctest asan

build tsan imsdk_thread_tests
run_ctest tsan --label-regex '^threads$'

BRIDGEHOST="$PWD/build/debug/bin/bridgehost"
export BRIDGEHOST
count_step 'generated files' node web/scripts/generate.mjs --check
run_page_tests 'page packages' test
run_page_tests 'end to end' e2e

print_totals
