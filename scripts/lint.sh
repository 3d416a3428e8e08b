#!/usr/bin/env bash
# Checks that every C++ source is formatted as .clang-format says, then runs clang-tidy with the
# checks of .clang-tidy over the library's sources, several files at a time. Any finding fails.
#   scripts/lint.sh          check
#   scripts/lint.sh --fix    reformat every C++ source in place, and do nothing else
# CLANG_FORMAT, CLANG_TIDY and LINT_JOBS override the tools and the number of parallel runs.
set -euo pipefail
cd "$(dirname "$0")/.."

clang_format=${CLANG_FORMAT:-clang-format-14}
clang_tidy=${CLANG_TIDY:-clang-tidy-14}
jobs=${LINT_JOBS:-$(nproc)}

# The library, without tools, tests, benchmarks and fuzz harnesses.
library_dirs=(platform settings node memory variables units project download statement)

if git rev-parse --is-inside-work-tree > /dev/null 2>&1; then
    mapfile -t sources < <(git ls-files -- '*.cpp' '*.h')
else
    mapfile -t sources < <(find . -path ./build\* -prune -o \( -name '*.cpp' -o -name '*.h' \) -print | sed 's|^\./||' | sort)
fi

if [[ ${1:-} == --fix ]]; then
    printf '%s\0' "${sources[@]}" | xargs -0 -P "$jobs" -n 16 "$clang_format" -i
    exit 0
elif [[ $# -gt 0 ]]; then
    echo "usage: scripts/lint.sh [--fix]" >&2
    exit 2
fi

status=0
echo "clang-format: ${#sources[@]} files"
if ! printf '%s\0' "${sources[@]}" | xargs -0 -P "$jobs" -n 16 "$clang_format" --dry-run -Werror; then
    echo "clang-format: sources differ from .clang-format; scripts/lint.sh --fix reformats them" >&2
    status=1
fi

# A configure-only build directory gives the compile database; nothing is compiled.
cmake -S . -B build-lint -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DVEM_BUILD_BENCH=OFF > /dev/null
library=()
for dir in "${library_dirs[@]}"; do
    for file in "$dir"/*.cpp; do library+=("$file"); done
done
echo "clang-tidy: ${#library[@]} files, $jobs at a time"
# Each file's findings, without the count of the compiler's warnings that clang-tidy suppressed.
tidy_one='set -o pipefail; "$0" -p build-lint --quiet "$1" 2>&1 | sed "/^[0-9]* warnings\? generated\.$/d"'
if ! printf '%s\0' "${library[@]}" | xargs -0 -P "$jobs" -n 1 bash -c "$tidy_one" "$clang_tidy"; then
    echo "clang-tidy: findings above" >&2
    status=1
fi
exit $status
