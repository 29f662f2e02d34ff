#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for FUZZ_SECONDS (60) from its seeds.
#   scripts/fuzz.sh                 all targets
#   scripts/fuzz.sh fuzz_scanner    those named
# What a target has found stays in build-fuzz/corpus/TARGET, an input that breaks it in build-fuzz/crashes/TARGET.
source "$(dirname "$0")/lib.sh"

scripts/install-packages.sh fuzz
# The libraries are instrumented as well as the targets: for coverage, addresses and undefined behaviour.
configure build-fuzz -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDECK_FUZZ=ON -DDECK_TESTS=OFF \
    -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer \
-D_GLIBCXX_ASSERTIONS"
build build-fuzz fuzz_targets

seconds=${FUZZ_SECONDS:-60}
targets=("$@")
if ((${#targets[@]} == 0)); then
    mapfile -t targets <build-fuzz/fuzz/targets.txt
fi

failed=0
for target in "${targets[@]}"; do
    corpus=build-fuzz/corpus/$target
    crashes=build-fuzz/crashes/$target
    mkdir -p "$corpus" "$crashes"
    seeds=()
    for folder in "fuzz/seeds/${target#fuzz_}" fuzz/seeds/common; do
        if [[ -d $folder ]]; then
            seeds+=("$folder")
        fi
    done
    dictionary=()
    if [[ -f fuzz/deck.dict ]]; then
        dictionary=(-dict=fuzz/deck.dict)
    fi
    echo "== $target, $seconds s"
    if "build-fuzz/bin/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=16384 \
        -print_final_stats=1 -verbosity=1 "${dictionary[@]}" -artifact_prefix="$crashes/" \
        "$corpus" "${seeds[@]}" >"build-fuzz/$target.log" 2>&1; then
        grep -E '^stat::(number_of_executed_units|peak_rss_mb)|^#.*DONE' "build-fuzz/$target.log" | sed 's/^/   /'
    else
        tail -n 40 "build-fuzz/$target.log"
        echo "   FAILED: see build-fuzz/$target.log and $crashes"
        failed=$((failed + 1))
    fi
done
echo "$((${#targets[@]} - failed)) clean, $failed broken"
exit $((failed > 0))
