#!/usr/bin/env bash
# Builds into build/; the tool is build/bin/deckman.
#   scripts/build.sh            everything
#   scripts/build.sh deckman    one target
source "$(dirname "$0")/lib.sh"

scripts/install-packages.sh
configure build -DCMAKE_BUILD_TYPE=RelWithDebInfo
build build "$@"
