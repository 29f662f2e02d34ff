#!/usr/bin/env bash
# Builds everything and runs all tests: plainly in build/, then under AddressSanitizer and UndefinedBehaviorSanitizer in
# build-sanitize/. The last line is "N passed, N failed", summed over both; a build that breaks counts as one failure.
#   scripts/test.sh             both
#   scripts/test.sh plain       one of the two
#   scripts/test.sh sanitize
source "$(dirname "$0")/lib.sh"

passed=0
failed=0
skipped=0
timings=()

# timed "stage" command...: runs the command, notes how long it took.
timed() {
    local stage=$1 begin=$SECONDS status=0
    shift
    "$@" || status=$?
    timings+=("$(awk -v s=$((SECONDS - begin)) -v n="$stage" 'BEGIN { printf "%6.1f min  %s", s / 60, n }')")
    return $status
}

# run_tests DIR: all tests of a build, added to the totals.
run_tests() {
    local dir=$1 log=$1/tests.log total failures skips
    (cd "$dir" && ctest -j "$JOBS" --timeout 300 --output-on-failure --no-tests=error) >"$log" 2>&1 || true
    # A test's output is worth reading only where it failed, and there ctest has put it in.
    grep -vE '^ *(Start|[0-9]+/[0-9]+ Test) .*' "$log" || true
    total=$(sed -nE 's/^[0-9]+% tests passed, [0-9]+ tests? failed out of ([0-9]+).*/\1/p' "$log")
    failures=$(sed -nE 's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of [0-9]+.*/\1/p' "$log")
    skips=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*Skipped' "$log" || true)
    if [[ -z $total ]]; then
        cat "$log"
        echo "No tests ran in $dir"
        failed=$((failed + 1))
        return
    fi
    passed=$((passed + total - failures - skips))
    failed=$((failed + failures))
    skipped=$((skipped + skips))
}

# suite NAME DIR [cmake options]: configures, builds and tests one kind of build.
suite() {
    local name=$1 dir=$2
    shift 2
    if timed "$name: configure" configure "$dir" "$@" && timed "$name: build" build "$dir"; then
        timed "$name: tests" run_tests "$dir"
    else
        echo "The $name build failed"
        failed=$((failed + 1))
    fi
}

kind=${1:-all}
timed "packages" scripts/install-packages.sh
if [[ $kind == all || $kind == plain ]]; then
    suite plain build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDECK_TESTS=ON
fi
if [[ $kind == all || $kind == sanitize ]]; then
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:allocator_may_return_null=1}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
    suite sanitize build-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDECK_TESTS=ON -DDECK_SANITIZE=ON
fi

echo
printf '%s\n' "${timings[@]}"
if ((skipped)); then
    echo "$passed passed, $failed failed, $skipped skipped"
else
    echo "$passed passed, $failed failed"
fi
exit $((failed > 0))
