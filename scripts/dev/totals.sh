# Counts of what really ran. A program that ends badly is a failure even when its own report
# shows none; a program or a run that reports no test at all is a failure too.

total_passed=0
total_failed=0
total_skipped=0

# add_totals NAME PASSED FAILED SKIPPED
add_totals() {
  say "$1: $2 passed, $3 failed, $4 skipped"
  total_passed=$((total_passed + $2))
  total_failed=$((total_failed + $3))
  total_skipped=$((total_skipped + $4))
}

# run_ctest PRESET [ctest flags]: needs the preset's build.
run_ctest() {
  preset=$1
  shift
  say "testing: $preset"
  results=build/$preset/test-results
  rm -rf "$results"
  mkdir -p "$results"
  status=0
  in_test_place "$preset" ctest --test-dir "build/$preset" --output-on-failure \
    --output-junit "$PWD/$results/ctest.xml" "$@" || status=$?
  count_ctest "$preset" "$results" "$status"
}

# Where the programs of a preset can run; ./dev windows puts Wine here.
in_test_place() {
  shift
  "$@"
}

count_ctest() {
  counts=$(sed -n 's/.*<testcase name="\([^"]*\)".* status="\([a-z]*\)".*/\1 \2/p' "$2/ctest.xml" |
    while read -r program state; do
      count_program "$2/$program.json" "$state"
    done | awk '{ p += $1; f += $2; s += $3 } END { printf "%d %d %d", p, f, s }')
  # shellcheck disable=SC2086
  set -- "$1" "$3" $counts
  if [ "$2" -ne 0 ] && [ "$4" -eq 0 ] || [ $(($3 + $4)) -eq 0 ]; then
    say "$1: ctest ended with status $2 after counting $3 passed, $4 failed"
    set -- "$1" "$2" "$3" 1 "$5"
  fi
  add_totals "$1" "$3" "$4" "$5"
}

# count_program REPORT STATE: prints "passed failed skipped" of one CTest entry. GoogleTest
# leaves a report; any other program, and one that died before writing it, counts as one test.
count_program() {
  if [ ! -e "$1" ]; then
    case $2 in
      run) echo '1 0 0' ;;
      disabled | notrun) echo '0 0 1' ;;
      *) echo '0 1 0' ;;
    esac
    return
  fi
  awk -v state="$2" '
    /^  "tests":/ { tests = $2 + 0 }
    /^  "failures":/ { failed = $2 + 0 }
    /^  "disabled":/ { skipped += $2 + 0 }
    /"result": "SKIPPED"/ { skipped++ }
    END {
      passed = tests - failed - skipped
      if (failed == 0 && (state != "run" || tests == 0)) failed = 1
      print passed, failed, skipped
    }' "$1"
}

# count_step NAME COMMAND...: one check that counts like a test.
count_step() {
  name=$1
  shift
  say "testing: $name"
  if "$@"; then add_totals "$name" 1 0 0; else add_totals "$name" 0 1 0; fi
}

# run_page_tests NAME SCRIPT: an npm script of web/ whose runner ends with its totals.
run_page_tests() {
  say "testing: $1"
  mkdir -p build/test-logs
  log=build/test-logs/npm-$2.log
  { (cd web && npm run "$2") </dev/null 2>&1 && echo 0 >"$log.status" || echo 1 >"$log.status"; } |
    tee "$log"
  # shellcheck disable=SC2046
  set -- "$1" "$(cat "$log.status")" $(awk -f scripts/dev/page-totals.awk "$log")
  if [ "$2" -ne 0 ] && [ "$4" -eq 0 ] || [ $(($3 + $4)) -eq 0 ]; then
    say "$1: the script ended with status $2 after counting $3 passed, $4 failed"
    set -- "$1" "$2" "$3" 1 "$5"
  fi
  add_totals "$1" "$3" "$4" "$5"
}

# Prints the closing line; false when anything failed.
print_totals() {
  line="$total_passed passed, $total_failed failed"
  [ "$total_skipped" -eq 0 ] || line="$line, $total_skipped skipped"
  printf '%s\n' "$line"
  [ "$total_failed" -eq 0 ]
}
