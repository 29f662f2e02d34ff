#!/usr/bin/env bash
# Builds deckman and shows it at work on the decks of examples/decks/.
source "$(dirname "$0")/lib.sh"

scripts/build.sh deckman >&2

DECKMAN=$ROOT/build/bin/deckman
cd examples/decks
FIELD=field/FIELD.DATA

# step "what it shows" arguments...: prints the command as a user would type it, then runs it.
step() {
    printf '\n== %s\n$ deckman %s\n' "$1" "${*:2}"
    "$DECKMAN" "${@:2}"
}

step "The files of a deck, and what includes what" tree "$FIELD"
step "Its sections, by the indices of ls" sections "$FIELD"
step "Every keyword of one section, whatever file it stands in" ls "$FIELD" --section SOLUTION
step "One kind of keyword, in the whole deck" ls "$FIELD" --name 'WCON*'
step "What encloses what" scopes "$FIELD"
step "A keyword's text, as it stands" show "$FIELD" SCHEDULE/WELSPECS
step "The same by file and line" show single/SKERROW.DATA SKERROW.DATA:204
step "A small deck from end to end, for machines" ls single/SKERROW.DATA --json
