#!/usr/bin/env bash
# Builds the fuzz harnesses with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer) and
# runs them one after the other, each on its seed corpus and a working corpus of its own.
#
#   scripts/fuzz.sh [-t seconds] [-r runs] [-f] [harness ...]
#
# -t caps the time of each harness (default 60), -r its executions (default: no cap). Without names
# all harnesses run. Each run starts from the seeds and the corpus kept in fuzz/corpus/<harness>;
# afterwards the kept corpus and the run's new inputs are minimised together (-merge=1) back into
# fuzz/corpus/<harness>, so the next campaign continues where this one ended. With -f (fresh, as in
# CI) new inputs go to a scratch corpus and nothing is kept. Findings go to build-fuzz/findings.
# libFuzzer's summary of each run (executions, time, features, corpus) is printed at the end.
# Two runs may share the build: the build itself is serialised with a lock.
set -euo pipefail
# The harnesses work in a scratch directory of their own, so every path given to them is absolute.
cd "$(dirname "$0")/.."

seconds=60
runs=-1
fresh=0
while getopts "t:r:f" opt; do
    case $opt in
        t) seconds=$OPTARG ;;
        r) runs=$OPTARG ;;
        f) fresh=1 ;;
        *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))

build=$PWD/build-fuzz
mkdir -p $build
(
    flock 9
    CC=clang CXX=clang++ cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEM_BUILD_FUZZ=ON \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache \
        -DVEM_BUILD_TESTS=OFF -DVEM_BUILD_BENCH=OFF -DVEM_BUILD_TOOLS=OFF > /dev/null
    ninja -C $build -j2 > /dev/null
) 9> $build/.lock

all=(node_file task_file bytearray segtbl code_chain hfile_open hfile_edit inifile questions)
harnesses=("${@:-${all[@]}}")

# Longest input of each harness: whole node files stay small enough to run fast.
max_len() {
    case $1 in
        hfile_open | hfile_edit | inifile) echo 16384 ;;
        *) echo 65536 ;;
    esac
}
# Seconds that one input may take: the questions harness asks everything of a tree four times.
unit_timeout() {
    case $1 in
        questions) echo 30 ;;
        *) echo 10 ;;
    esac
}
dict() {
    case $1 in
        hfile_open | hfile_edit) echo $PWD/fuzz/hfile.dict ;;
        inifile) echo $PWD/fuzz/ini.dict ;;
        *) echo $PWD/fuzz/node.dict ;;
    esac
}

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
mkdir -p $build/findings
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
summary=()
status=0
for name in "${harnesses[@]}"; do
    corpus=$build/corpus/$name
    if [ $fresh = 1 ]; then corpus=$scratch/$name; fi
    rm -rf "$corpus" && mkdir -p "$corpus"
    log=$build/findings/$name.log
    echo "== $name: up to ${seconds}s, runs $runs"
    kept=()  # the corpus kept in the sources, where the last campaign ended
    if [ -d fuzz/corpus/$name ]; then kept=($PWD/fuzz/corpus/$name); fi
    if ! $build/fuzz/${name}_fuzzer "$corpus" $build/fuzz/seeds/$name "${kept[@]}" -dict="$(dict $name)" \
        -max_len="$(max_len $name)" -max_total_time="$seconds" -runs="$runs" -rss_limit_mb=1024 \
        -malloc_limit_mb=256 -timeout="$(unit_timeout $name)" -print_final_stats=1 -artifact_prefix=$build/findings/$name- \
        > "$log" 2>&1; then
        status=1
        echo "!! $name failed; see $log"
        tail -n 40 "$log"
    fi
    execs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo '?')
    rss=$(grep -o 'stat::peak_rss_mb: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo '?')
    secs=$(grep -o 'Done [0-9]* runs in [0-9]* second' "$log" | grep -o 'in [0-9]*' | grep -o '[0-9]*' || echo "$seconds")
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | grep -o '[0-9]*' || echo '?')
    ft=$(grep -o 'ft: [0-9]*' "$log" | tail -n 1 | grep -o '[0-9]*' || echo '?')
    if [ $fresh = 0 ]; then
        # Minimise the kept corpus and the new inputs together into a fresh directory, then keep that.
        merged=$scratch/merged-$name
        mkdir -p "$merged"
        if $build/fuzz/${name}_fuzzer -merge=1 "$merged" "${kept[@]}" "$corpus" -max_len="$(max_len $name)" \
            -rss_limit_mb=1024 -malloc_limit_mb=256 -timeout="$(unit_timeout $name)" > "$log.merge" 2>&1 &&
            [ -n "$(ls -A "$merged")" ]; then
            rm -rf fuzz/corpus/$name && mkdir -p fuzz/corpus/$name && cp "$merged"/* fuzz/corpus/$name/
        else
            status=1
            echo "!! merging $name failed; the kept corpus stays; see $log.merge"
        fi
    fi
    files=$(find fuzz/corpus/$name -type f 2>/dev/null | wc -l)
    bytes=$(cat fuzz/corpus/$name/* 2>/dev/null | wc -c)
    summary+=("$(printf '%-12s %10s execs %6ss %6s MB %6s edges %7s features %5s files %8s bytes kept' \
        "$name" "$execs" "$secs" "$rss" "$cov" "$ft" "$files" "$bytes")")
done
printf '%s\n' "${summary[@]}"
exit $status
