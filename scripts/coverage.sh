#!/usr/bin/env bash
# Line and branch coverage of the library by the test suite and the fuzz corpora, per subsystem, with
# gcovr (installed from Debian if it is missing). The library is built without optimisation with
# gcc's --coverage in build-cov; the test program runs once, then every fuzz harness, built without
# libFuzzer, runs its seeds and its kept corpus (fuzz/corpus/<harness>) once, and gcovr sums what
# they reached, folder by folder.
#
#   scripts/coverage.sh            table on standard output
#   scripts/coverage.sh -m         the same as a Markdown table (for docs/reliability.md)
#   scripts/coverage.sh -t         the test suite alone, without the fuzz corpora
#   scripts/coverage.sh -d FILE    also keep gcovr's line-by-line JSON in FILE, for
#                                  scripts/coverage_lost.py (what one tree covers and another no longer does)
#
# Branches that only an exception can take and branches that the compiler proves unreachable are
# not counted: gcc makes several of them for every call that may throw.
set -euo pipefail
cd "$(dirname "$0")/.."
markdown=0
tests_only=0
detail=
while getopts "mtd:" opt; do
    case $opt in
        m) markdown=1 ;;
        t) tests_only=1 ;;
        d) detail=$(realpath -m "$OPTARG") ;;
        *) exit 2 ;;
    esac
done

if ! command -v gcovr > /dev/null; then
    apt-get install -y gcovr > /dev/null
fi

build=$PWD/build-cov
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -O0" \
    -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage \
    -DVEM_BUILD_BENCH=OFF -DVEM_BUILD_TOOLS=OFF -DVEM_BUILD_FUZZ_REPLAY=ON -DCMAKE_CXX_COMPILER_LAUNCHER=ccache > /dev/null
ninja -C $build -j2 > /dev/null
# Notes of objects that the build no longer makes (a source moved or removed) would be read as
# sources never run: drop the dead objects, then every notes file without its object.
ninja -C $build -t cleandead > /dev/null
find $build -name '*.gcno' | while read -r notes; do
    if [ ! -e "${notes%.gcno}.o" ]; then rm -f "$notes"; fi
done
find $build -name '*.gcda' -delete
$build/tests/vem32_tests --gtest_brief=1 > /dev/null 2>&1
for fuzzer in $build/fuzz/*_fuzzer; do
    if [ $tests_only = 1 ]; then break; fi
    name=$(basename $fuzzer _fuzzer)
    inputs=()
    for dir in $build/fuzz/seeds/$name $PWD/fuzz/corpus/$name; do
        if [ -d $dir ]; then inputs+=($dir); fi
    done
    $fuzzer "${inputs[@]}" > /dev/null
done

json=$build/coverage.json
# The search starts in the build directory only: the tree holds links that lead back to / (a wine
# prefix), which a search from the root would follow.
filters=(-r . $build --object-directory $build --exclude-directories '.*CompilerId.*'
    --filter '(platform|node|memory|variables|units|project|download|statement)/'
    --exclude-throw-branches --exclude-unreachable-branches)
gcovr "${filters[@]}" --json-summary-pretty -o $json
if [ -n "$detail" ]; then gcovr "${filters[@]}" --json -o "$detail"; fi
python3 - "$json" $markdown <<'PY'
import json, sys
files = json.load(open(sys.argv[1]))["files"]
markdown = sys.argv[2] == "1"
order = ["platform", "node", "memory", "variables", "units", "project", "download", "statement"]
sums = {d: [0, 0, 0, 0] for d in order}
for f in files:
    d = f["filename"].split("/")[0]
    if d in sums:
        s = sums[d]
        s[0] += f["line_covered"]; s[1] += f["line_total"]
        s[2] += f["branch_covered"]; s[3] += f["branch_total"]
total = [sum(s[i] for s in sums.values()) for i in range(4)]
pct = lambda a, b: 100.0 * a / b if b else 100.0
if markdown:
    print("| Subsystem | Lines | Line coverage | Branches | Branch coverage |")
    print("|---|---:|---:|---:|---:|")
for d in order + ["library"]:
    s = total if d == "library" else sums[d]
    if markdown:
        print(f"| {d} | {s[0]}/{s[1]} | {pct(s[0], s[1]):.1f}% | {s[2]}/{s[3]} | {pct(s[2], s[3]):.1f}% |")
    else:
        print(f"{d:10} lines {s[0]:6}/{s[1]:<6} {pct(s[0], s[1]):5.1f}%   branches {s[2]:6}/{s[3]:<6} {pct(s[2], s[3]):5.1f}%")
PY
