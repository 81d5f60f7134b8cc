# ./dev fuzz [target] [seconds]: all targets, or one, for the given time each (default 60).

[ -e fuzz/CMakeLists.txt ] || die 'there are no fuzz targets yet (no fuzz/CMakeLists.txt)'

# shellcheck disable=SC2086
need_packages $library_packages clang libclang-rt-14-dev
build fuzz

target=${1:-}
seconds=${2:-60}
[ -z "$target" ] || [ -x "build/fuzz/bin/fuzz_$target" ] || die "no fuzz target named $target"

for program in build/fuzz/bin/fuzz_${target:-*}; do
  [ -x "$program" ] || die 'the build left no fuzz program'
  name=${program##*/fuzz_}
  corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  say "fuzzing $name for $seconds seconds"
  seeds=fuzz/corpus/$name
  [ -d "$seeds" ] || seeds=
  # shellcheck disable=SC2086
  "$program" -max_total_time="$seconds" -artifact_prefix="build/fuzz/$name-" "$corpus" $seeds
done
