#!/usr/bin/env bash
# Installs the build into a fresh prefix that is not the default and uses it as a new user does: a
# CMake consumer through find_package with no language standard of its own, a one-line compile
# through pkg-config, and the installed vemtool. Nothing is patched and no library path is set: the
# package carries what it needs. Then the prefix moves, and everything is done again from there.
set -euo pipefail
build="$1"
source_dir="$2"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH CPATH LIBRARY_PATH CPLUS_INCLUDE_PATH PKG_CONFIG_PATH CXXFLAGS LDFLAGS
cmake --install "$build" --prefix "$work/prefix" > /dev/null

use_prefix() {
    local prefix="$1" tag="$2"
    cmake -S "$source_dir/tests/consumer" -B "$work/cmake-$tag" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
    cmake --build "$work/cmake-$tag" > /dev/null
    (cd "$work" && "$work/cmake-$tag/consumer" "$work/$tag-a.vem")
    if command -v pkg-config > /dev/null; then
        local pcdir
        pcdir=$(dirname "$(find "$prefix" -name vem32.pc | head -n 1)")
        (
            export PKG_CONFIG_PATH="$pcdir"
            cd "$work"
            pkg-config --atleast-version=1.0 vem32
            # shellcheck disable=SC2046  # the flags are meant to split
            c++ "$source_dir/tests/consumer/main.cpp" -o "$work/pc-$tag" $(pkg-config --cflags --libs vem32)
            "$work/pc-$tag" "$work/$tag-b.vem"
        )
    fi
    # vem32.h stands on the top-level headers alone, and a host of the flat functions needs no more.
    local deps
    deps=$(printf '#include "vem32.h"\nint main() { CVemBaseNode* n = VemNewNode(kVemBaseNode); VemDeleteNode(n); }\n' |
        c++ -std=c++20 -fsyntax-only -MD -MF /dev/stdout -x c++ -I"$prefix/include/vem32" -)
    if grep -E "include/vem32/[a-z]+/" <<<"$deps"; then
        echo "vem32.h pulls headers of the subsystems"
        exit 1
    fi
    "$prefix/bin/vemtool" demo "$work/demo-$tag" > /dev/null
    (cd / && "$prefix/bin/vemtool" check "$work/demo-$tag/LINE1.vem" > /dev/null)
    echo "prefix $tag ok"
}

use_prefix "$work/prefix" installed
mv "$work/prefix" "$work/moved"
use_prefix "$work/moved" moved

# The version file: a consumer that asks for another major version does not get this one.
mkdir "$work/v2"
printf 'cmake_minimum_required(VERSION 3.20)\nproject(V2 LANGUAGES CXX)\nfind_package(Vem32 2.0 REQUIRED)\n' \
    > "$work/v2/CMakeLists.txt"
if cmake -S "$work/v2" -B "$work/v2/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" > /dev/null 2>&1; then
    echo "find_package(Vem32 2.0) accepted version 1"
    exit 1
fi
echo "installed package ok"
