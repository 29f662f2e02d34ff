# Shared by the scripts of this folder; sourced, never run.
# Leaves the shell in the root of the repository, with the build settings that all of them use.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
ROOT=$PWD
JOBS=${JOBS:-$(nproc)}

if command -v ccache >/dev/null 2>&1; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_SLOPPINESS=pch_defines,time_macros
    export CCACHE_BASEDIR=$ROOT CCACHE_NOHASHDIR=1
fi

# configure DIR [cmake options]: makes the build directory, and says nothing unless that fails.
configure() {
    local dir=$1 log
    shift
    log=$(mktemp)
    if ! cmake -S "$ROOT" -B "$dir" -G Ninja "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# build DIR [targets]: builds all, or the targets named.
build() {
    local dir=$1
    shift
    if (($#)); then
        cmake --build "$dir" -j "$JOBS" --target "$@"
    else
        cmake --build "$dir" -j "$JOBS"
    fi
}
