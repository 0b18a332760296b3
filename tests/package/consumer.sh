#!/usr/bin/env bash
# usage: consumer.sh BUILD_FOLDER SOURCE_FOLDER COMPILER SANITIZERS LIBRARY_FOLDER [PLATFORM_LIBRARY]
set -euo pipefail
build=$1 source=$2 compiler=$3 sanitize=$4 libraries=$5 platform=${6:-}
work=$(mktemp -d)
trap 'kill $core 2>/dev/null || true; rm -rf "$work"' EXIT
core=
flags=${sanitize:+-fsanitize=$sanitize}

cmake --install "$build" --prefix "$work/prefix" >"$work/log" || { cat "$work/log"; exit 1; }
export LD_LIBRARY_PATH="$work/prefix/$libraries${platform:+:${platform%/*}}"

cmake -S "$source/examples/first-steps" -B "$work/app" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
      -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_PREFIX_PATH="$work/prefix" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
cmake --build "$work/app" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }

export PKG_CONFIG_PATH="$work/prefix/$libraries/pkgconfig"
# shellcheck disable=SC2046,SC2086  # words are wanted
$compiler $flags "$source/examples/first-steps/main.cpp" -o "$work/app-pkgconfig" \
    $(pkg-config --cflags --libs zelplatform)

# every installed header stands on its own
find "$work/prefix/include/zelplatform" -name '*.h' | sort | while read -r header; do
    echo "#include <${header#"$work"/prefix/include/zelplatform/}>"
done >"$work/headers.cpp"
# shellcheck disable=SC2046,SC2086
$compiler $flags -fsyntax-only "$work/headers.cpp" $(pkg-config --cflags zelplatform)

env -u LD_LIBRARY_PATH "$work/prefix/bin/zelcore-sim" --root "$work/root" </dev/null >"$work/core.log" 2>&1 &
core=$!
for _ in $(seq 200); do [ -S "$work/root/services/zelcore/platform" ] && break; sleep 0.05; done
export PPS_ROOT="$work/root"
for app in "$work/app/first-steps" "$work/app-pkgconfig"; do
    LD_PRELOAD="$platform" timeout 30 "$app" 2>&1 | tee "$work/out"
    grep -q Allowed "$work/out"
done
