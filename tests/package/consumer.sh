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

quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
configure() # SOURCE NAME [argument...]
{
    cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" \
          -DCMAKE_PREFIX_PATH="$work/prefix" "${@:3}"
}
examples=(first-steps)
components=(Platform Containers Models Requests)
module="$work/prefix/$libraries/qt6/qml/ZelPlatform"
[ ! -d "$module" ] || examples+=(first-window)
[ -n "$platform" ] || { examples+=(contact-test); components+=(Simulator); }
for example in "${examples[@]}"; do
    quietly configure "$source/examples/$example" "$example"
    quietly cmake --build "$work/$example"
done

export PKG_CONFIG_PATH="$work/prefix/$libraries/pkgconfig"
# shellcheck disable=SC2046,SC2086  # words are wanted
$compiler $flags "$source/examples/first-steps/main.cpp" -o "$work/app-pkgconfig" \
    $(pkg-config --cflags --libs zelplatform)

# Every component's headers stand on their own, with what it says it needs and nothing else, by either way; the first
# one has those of the public classes, and the export macro.
[ "$(find "$work/prefix/include/zelplatform/platform" -name '*.h' -not -path '*/vx/platform/zel/*' -printf %P)" \
    = iface/Export.h ]
mkdir "$work/headers"
cat >"$work/headers/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(headers LANGUAGES CXX)
find_package(ZelPlatform 2.0 REQUIRED COMPONENTS ${COMPONENT})
add_library(headers OBJECT ${COMPONENT}.cpp)
target_link_libraries(headers PRIVATE ZelPlatform::${COMPONENT})
END
for component in "${components[@]}"; do
    folder="$work/prefix/include/zelplatform/${component,,}"
    find "$folder" -name '*.h' -printf '#include <%P>\n' | sort >"$work/headers/$component.cpp"
    quietly configure "$work/headers" "headers-$component" -DCOMPONENT="$component"
    quietly cmake --build "$work/headers-$component"
    module=zelplatform-${component,,}
    # shellcheck disable=SC2046,SC2086
    $compiler $flags -fsyntax-only "$work/headers/$component.cpp" $(pkg-config --cflags "${module%-platform}")
done
! configure "$work/headers" headers-unknown -DCOMPONENT=Unknown >"$work/log" 2>&1
grep -q "component Unknown is not installed" "$work/log"

# The module is whole: QML's tools know its types, and the program that imports it shows a window.
if [ -d "$module" ]; then
    quietly cmake --build "$work/first-window" --target all_qmllint
    QT_QPA_PLATFORM=offscreen quietly env -u LD_LIBRARY_PATH ASAN_OPTIONS=detect_leaks=0 timeout 60 \
        "$work/prefix/bin/zel-contacts" --simulate --screenshot "$work/window.png"
fi

[ -n "$platform" ] || timeout 60 "$work/contact-test/contact-test"

env -u LD_LIBRARY_PATH "$work/prefix/bin/zelcore-sim" --root "$work/root" </dev/null >"$work/core.log" 2>&1 &
core=$!
for _ in $(seq 200); do [ -S "$work/root/services/zelcore/platform" ] && break; sleep 0.05; done
export PPS_ROOT="$work/root"
for app in "$work/first-steps/first-steps" "$work/app-pkgconfig"; do
    LD_PRELOAD="$platform" timeout 30 "$app" 2>&1 | tee "$work/out"
    grep -q Allowed "$work/out"
done
