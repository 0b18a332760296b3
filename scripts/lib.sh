# shellcheck shell=bash
# What every script here starts with: the repository as working folder, a UTF-8 locale, and building by preset.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
case "${LC_ALL:-${LC_CTYPE:-${LANG:-}}}" in
    *[Uu][Tt][Ff]*) ;;
    *) export LC_ALL=C.UTF-8 ;;
esac

die() { echo "$(basename "$0"): $*" >&2; exit 1; }

# progress: reads what Ninja prints and shows how far it is: in one line on a terminal, else in a line now and then.
progress() {
    local line step next=15 shown=''
    SECONDS=0
    while IFS= read -r line; do
        [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || continue
        step="${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} steps"
        if [ -t 1 ]; then
            printf '\r  %s ' "$step"
            shown=1
        elif [ "$SECONDS" -ge "$next" ]; then
            echo "  $step"
            next=$((SECONDS + 15))
        fi
    done
    [ -z "$shown" ] || printf '\r\033[K'
}

# Without this the compiler's cache leaves alone what was compiled with precompiled headers.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"

# build PRESET [TARGET...]: configures and builds; shows how far it is, and what failed.
build() {
    local preset=$1 log
    shift
    log="build/$preset.log"
    mkdir -p build
    ZEL_COMPILER_LAUNCHER=$(command -v ccache || true)
    export ZEL_COMPILER_LAUNCHER
    echo "Building ($preset) ..."
    cmake --preset "$preset" >"$log" 2>&1 || { tail -n 30 "$log" >&2; die "configuring failed, see $log"; }
    cmake --build --preset "$preset" ${1:+--target "$@"} 2>&1 | tee "$log" | progress || {
        grep -E -A 12 'error|FAILED' "$log" | head -n 60 >&2
        die "building failed, see $log"
    }
}
