# ./dev fuzz [target] [seconds]: all targets, or one, for the given time each (default 60). Ends with
# the totals; what breaks a promise is left as build/fuzz/TARGET-crash-... and can be given to the
# target's program again.

. scripts/dev/totals.sh

target=${1:-all}
seconds=${2:-60}

# shellcheck disable=SC2086
need_packages $library_packages clang libclang-rt-14-dev
build fuzz imsdk_fuzz

[ "$target" != all ] || target='*'
[ "$target" = '*' ] || [ -x "build/fuzz/bin/fuzz_$target" ] || die "no fuzz target named $target"

for program in build/fuzz/bin/fuzz_$target; do
  [ -x "$program" ] || die 'the build left no fuzz program'
  name=${program##*/fuzz_}
  corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  seeds=fuzz/corpus/$name
  [ -d "$seeds" ] || seeds=
  # shellcheck disable=SC2086
  count_step "fuzz target $name for $seconds seconds" "$program" \
    -max_total_time="$seconds" -max_len=8192 -timeout=20 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/$name-" "$corpus" $seeds
done

print_totals
