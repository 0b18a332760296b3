# shellcheck shell=bash
# What every script here starts with: the repository as working folder, a UTF-8 locale, and building by preset.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
case "${LC_ALL:-${LC_CTYPE:-${LANG:-}}}" in
    *[Uu][Tt][Ff]*) ;;
    *) export LC_ALL=C.UTF-8 ;;
esac

die() { echo "$(basename "$0"): $*" >&2; exit 1; }

# build PRESET [TARGET...]: configures and builds; quiet unless something fails.
build() {
    local preset=$1 log
    shift
    log="build/$preset.log"
    mkdir -p build
    ZEL_COMPILER_LAUNCHER=$(command -v ccache || true)
    export ZEL_COMPILER_LAUNCHER
    # Without this the cache leaves alone what was compiled with precompiled headers.
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
    echo "Building ($preset) ..."
    cmake --preset "$preset" >"$log" 2>&1 || { tail -n 30 "$log" >&2; die "configuring failed, see $log"; }
    cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1 || {
        grep -E -A 12 'error|FAILED' "$log" | head -n 60 >&2
        die "building failed, see $log"
    }
}
