#!/usr/bin/env bash
# Builds deckman and shows it at work on the decks of examples/decks/.
source "$(dirname "$0")/lib.sh"

scripts/build.sh deckman >&2

DECKMAN=$ROOT/build/bin/deckman
cd examples/decks
FIELD=field/FIELD.DATA
OUT=../../build/demo
rm -rf "$OUT"
mkdir -p "$OUT"

# step "what it shows" arguments...: prints the command as a user would type it, then runs it.
step() {
    local word line='$ deckman'
    for word in "${@:2}"; do
        if [[ $word == *[!A-Za-z0-9_./:=#@-]* ]]; then
            word="'$word'"
        fi
        line+=" $word"
    done
    printf '\n== %s\n%s\n' "$1" "$line"
    "$DECKMAN" "${@:2}"
}

step "A deck in one file: its keywords in order" ls single/SKERROW.DATA
step "The files of a field's deck, and what includes what" tree "$FIELD"
step "Its sections, by the indices of ls" sections "$FIELD"
step "Every keyword of one section, whatever file it stands in" ls "$FIELD" --section SOLUTION
step "Some kinds of keyword, in the whole deck" ls "$FIELD" --name 'WEL*'
step "What the user wrote into the schedule, among what was generated" ls "$FIELD" --section SCHEDULE --user
step "What encloses what" scopes "$FIELD"
step "A keyword's text, as it stands" show "$FIELD" SCHEDULE/WELSPECS
step "The same by file and line" show single/SKERROW.DATA SKERROW.DATA:204
step "The keywords whose data match" find "$FIELD" 'HR-P[56]'
step "The typed data of a keyword, by the names of its items" get "$FIELD" SCHEDULE/WCONPROD
step "One item of it" get "$FIELD" 'WCONPROD[HR-P2].ORAT'
step "The same for machines" get "$FIELD" 'WCONPROD[HR-P2]' --json
step "The moments of the schedule" dates "$FIELD"
step "The keywords in force at a date" ls "$FIELD" --at 2024-01-01
step "Whether all data can be read" check "$FIELD"
step "What the catalogue knows of a keyword" syntax WELSPECS
step "The whole deck in one file" flatten "$FIELD" -o "$OUT/FLAT.DATA"
step "What has changed by that: nothing that a simulator reads" diff "$FIELD" "$OUT/FLAT.DATA"
step "The deck with all its files in another directory" copy "$FIELD" "$OUT/copy"
step "One value changed, and not a byte besides" set "$OUT/copy/FIELD.DATA" 'WCONPROD[HR-P2].ORAT' 900 --dry-run
step "The same, and the old file beside the new one" \
    set "$OUT/copy/FIELD.DATA" 'WCONPROD[HR-P2].ORAT' 900 --backup --json
step "A directory of decks, which keeps where their keywords stand" project init "$OUT/studies"
step "A copy of a deck in it" project add "$OUT/studies" base "$FIELD"
step "A verb that uses what is kept" get "$OUT/studies/base/base.DATA" 'WCONPROD[HR-P2].ORAT' --project "$OUT/studies"
step "The project in another place" project move "$OUT/studies" "$OUT/archive/2026"
step "What a user wrote into last month's deck, carried into the one made anew" \
    merge regenerated/last/BRYNJE.DATA regenerated/now/BRYNJE.DATA --comments --map grid.inc=grid_r2.inc -o "$OUT/merged"
step "What that has changed" diff regenerated/now/BRYNJE.DATA "$OUT/merged/BRYNJE.DATA" || true
step "What an order by the rules of the language would move" sort unsorted/NORTH.DATA --dry-run
step "A search for machines" find "$FIELD" 'HR-P[56]' --json
