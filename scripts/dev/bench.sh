# ./dev bench [flags of Google Benchmark]

# shellcheck disable=SC2086
need_packages $library_packages libbenchmark-dev
build release imsdk_bench
exec build/release/bin/imsdk_bench \
  --benchmark_out=build/bench.json --benchmark_out_format=json "$@"
