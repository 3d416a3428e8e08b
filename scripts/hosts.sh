#!/usr/bin/env bash
# Builds the library, vemtool and the whole test suite for the other hosts with Debian's cross
# toolchains, runs the suite on each, and compares the bytes that each host writes with those of
# the x86-64 build:
#   windows  Windows x86-64, MinGW-w64 g++ (POSIX threads), run under wine64
#   s390x    s390x Linux, big-endian, s390x-linux-gnu-g++, run under qemu-s390x
#   i386     32-bit x86 Linux, g++ -m32, run natively
# usage: scripts/hosts.sh [windows|s390x|i386|all]   (default all)
#
# The bytes compared: `vemtool demo` (the demo resource's node file, task files and tree picture)
# and `vem32_hostbytes` (random trees of every node class, byte arrays of every layout, a segment
# table, statements of every kind, a data container, a statement list and a download list).
# GoogleTest is built from /usr/src/googletest with each toolchain; nothing is downloaded.
#
# The whole suite runs on every host. A test that cannot apply on a host skips itself and says
# why (a process killed in the middle of a write, and resource limits, on Windows).
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)  # Debian keeps it out of PATH without `wine`
out=$root/build-hosts
jobs=${VEM_JOBS:-2}
launcher=()
command -v ccache > /dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
what=${1:-all}
case "$what" in
    windows | s390x | i386) hosts=("$what") ;;
    all) hosts=(i386 s390x windows) ;;
    *)
        echo "usage: scripts/hosts.sh [windows|s390x|i386|all]" >&2
        exit 2
        ;;
esac

# Runs a command and shows its output only when it fails.
quiet() {
    local log
    log=$(mktemp)
    if ! "$@" > "$log" 2>&1; then
        cat "$log"
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

packages_of() {
    case "$1" in
        windows) echo g++-mingw-w64-x86-64-posix wine64 ;;
        s390x) echo g++-s390x-linux-gnu qemu-user ;;
        i386) echo g++-12-multilib ;;  # g++-multilib would conflict with the cross compilers
    esac
}

install_missing() {
    local missing=()
    for p in cmake ninja-build g++ libgtest-dev $(for h in "${hosts[@]}"; do packages_of "$h"; done); do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing: ${missing[*]}"
    local sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends \
        -o DPkg::Lock::Timeout=600 "${missing[@]}"
}

toolchain_of() {
    case "$1" in
        windows) echo "$root/cmake/toolchain-mingw64.cmake" ;;
        s390x) echo "$root/cmake/toolchain-s390x.cmake" ;;
        i386) echo "$root/cmake/toolchain-i386.cmake" ;;
    esac
}

# How a program of the host is started.
runner_of() {
    case "$1" in
        windows) echo "$wine" ;;
        s390x) echo "qemu-s390x -L /usr/s390x-linux-gnu" ;;
        i386) echo "" ;;
    esac
}

exe_of() { # host, program
    if [ "$1" = windows ]; then echo "$out/$1/bin/$2.exe"; else echo "$out/$1/bin/$2"; fi
}

build_gtest() {
    local host=$1 prefix=$out/$1/gtest
    [ -f "$prefix/lib/cmake/GTest/GTestConfig.cmake" ] && return
    quiet cmake -S /usr/src/googletest -B "$out/$host/gtest-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$(toolchain_of "$host")" -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DBUILD_GMOCK=OFF -DINSTALL_GTEST=ON "${launcher[@]}"
    quiet nice -n 10 ninja -C "$out/$host/gtest-build" -j"$jobs" install
}

# Optimised as the native build, but without debug information: that is a third of the compile time
# of the tests, and CI builds three hosts.
build_host() {
    local host=$1
    build_gtest "$host"
    quiet cmake -S . -B "$out/$host/vem" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
        -DCMAKE_TOOLCHAIN_FILE="$(toolchain_of "$host")" -DGTest_DIR="$out/$host/gtest/lib/cmake/GTest" \
        -DCMAKE_RUNTIME_OUTPUT_DIRECTORY="$out/$host/bin" -DCMAKE_LIBRARY_OUTPUT_DIRECTORY="$out/$host/bin" \
        -DVEM_BUILD_BENCH=OFF "${launcher[@]}"
    quiet nice -n 10 ninja -C "$out/$host/vem" -j"$jobs" vem32 vemtool vem32_tests vem32_hostbytes
}

# The bytes a host writes, into $out/bytes/<host>.
write_bytes() { # host, runner, vemtool, hostbytes
    local dir=$out/bytes/$1
    rm -rf "$dir"
    mkdir -p "$dir"
    (cd "$dir" && $2 "$3" demo demo > /dev/null && $2 "$4" records)
}

native_bytes() {
    quiet cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
    quiet ninja -C build -j"$jobs" vemtool vem32_hostbytes
    write_bytes x86-64 "" "$root/build/tools/vemtool" "$root/build/tests/vem32_hostbytes"
}

run_host() {
    local host=$1 runner
    runner=$(runner_of "$host")
    if [ "$host" = windows ]; then
        export WINEPREFIX=$out/wineprefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
        [ -d "$WINEPREFIX" ] || "$wine" wineboot -i > /dev/null 2>&1 || true
    fi
    echo "== $host: test suite"
    $runner "$(exe_of "$host" vem32_tests)" --gtest_brief=1
    echo "== $host: bytes against x86-64"
    write_bytes "$host" "$runner" "$(exe_of "$host" vemtool)" "$(exe_of "$host" vem32_hostbytes)"
    if ! diff -r "$out/bytes/x86-64" "$out/bytes/$host"; then
        echo "== $host: the bytes differ from the x86-64 ones" >&2
        return 1
    fi
    echo "== $host: $(find "$out/bytes/$host" -type f | wc -l) files, the same bytes as on x86-64"
}

install_missing
mkdir -p "$out"
native_bytes
# Every host is tried; the script fails at the end if one of them failed.
failed=()
for host in "${hosts[@]}"; do
    start=$SECONDS
    echo "== $host: build"
    set +e
    (
        set -e
        build_host "$host"
        run_host "$host"
    )
    status=$?
    set -e
    [ $status -eq 0 ] || failed+=("$host")
    echo "== $host: built and run in $((SECONDS - start)) s$([ $status -eq 0 ] || echo ", FAILED")"
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "== failed on: ${failed[*]}" >&2
    exit 1
fi
