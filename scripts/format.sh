#!/usr/bin/env bash
# Formats the C++ sources by .clang-format.
#   scripts/format.sh            in place
#   scripts/format.sh --check    changes nothing, fails when something would change
source "$(dirname "$0")/lib.sh"

formatter=$(command -v clang-format-14 || command -v clang-format) || {
    echo "clang-format is not installed (package clang-format-14)" >&2
    exit 1
}
mode=(-i)
if [[ ${1:-} == --check ]]; then
    mode=(--dry-run --Werror)
fi
git ls-files -z -- '*.h' '*.cpp' | xargs -0 "$formatter" "${mode[@]}"
