#!/usr/bin/env bash
# Prints the table of budgets: each piece of work beside its yardstick, both measured in the same run.
# The large decks (600 MB) are made once, in build/benchmark-decks-1.
#   scripts/bench.sh
#   BENCH_SCALE=0.1 scripts/bench.sh    with decks of a tenth of the size, for a quick look
source "$(dirname "$0")/lib.sh"

scale=${BENCH_SCALE:-1}
decks=build/benchmark-decks-$scale

scripts/install-packages.sh
configure build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDECK_BENCHMARKS=ON
build build deckman generate_decks benchmark_table >&2

# A change of the generator makes the decks anew.
if [[ ! -f $decks/complete || build/bin/generate_decks -nt $decks/complete ]]; then
    rm -rf "$decks"
    build/bin/generate_decks "$decks" --scale "$scale"
    touch "$decks/complete"
fi

build/bin/benchmark_table build/bin/deckman "$decks" examples/decks/single/SKERROW.DATA
