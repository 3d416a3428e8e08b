#!/usr/bin/env bash
# Installs the build into a scratch prefix and builds a small program against the package, once
# through find_package and once through pkg-config.
set -euo pipefail
build="$1"
source_dir="$2"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" > /dev/null
cmake -S "$source_dir/tests/consumer" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" > /dev/null
cmake --build "$work/consumer" > /dev/null
libdir=$(dirname "$(find "$work/prefix" -name 'libvem32.so' | head -n 1)")
(cd "$work" && LD_LIBRARY_PATH="$libdir" "$work/consumer/consumer" "$work/a.vem")
if command -v pkg-config > /dev/null; then
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    sed -i "s#^prefix=.*#prefix=$work/prefix#" "$libdir/pkgconfig/vem32.pc"
    c++ "$source_dir/tests/consumer/main.cpp" -o "$work/pc-consumer" $(pkg-config --cflags --libs vem32)
    (cd "$work" && LD_LIBRARY_PATH="$libdir" "$work/pc-consumer" "$work/b.vem")
fi
