#!/usr/bin/env bash
# Builds the benchmarks (Release), runs them and writes docs/performance.md: the machine, every
# figure with its ratio to its floor and to its goal, and the heap per node.
#
#   scripts/bench.sh                 all benchmarks, 3 repetitions, the median of each
#   VEM_BENCH_REPETITIONS=5 scripts/bench.sh
#   VEM_BENCH_BASELINE=old.json scripts/bench.sh     adds a column with the figures of an earlier run
#   VEM_BENCH_SHARED="..." scripts/bench.sh          notes in the document what else ran on the machine
set -euo pipefail
cd "$(dirname "$0")/.."
repetitions=${VEM_BENCH_REPETITIONS:-3}
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEM_BUILD_TESTS=OFF -DVEM_BUILD_TOOLS=ON > /dev/null
ninja -C build-bench -j2 vem32_bench
results=build-bench/bench-results.json
build-bench/bench/vem32_bench --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
    --benchmark_format=console --benchmark_out_format=json --benchmark_out="$results"
compiler=$(${CXX:-c++} --version | head -n 1)
args=(--compiler "$compiler" --repetitions "$repetitions")
if [[ -n "${VEM_BENCH_BASELINE:-}" ]]; then args+=(--baseline "$VEM_BENCH_BASELINE"); fi
if [[ -n "${VEM_BENCH_SHARED:-}" ]]; then args+=(--shared "$VEM_BENCH_SHARED"); fi
python3 scripts/bench_report.py "${args[@]}" "$results" docs/performance.md
echo "docs/performance.md written from $results"
