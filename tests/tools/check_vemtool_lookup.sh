#!/usr/bin/env bash
# The tool's debugger answers end to end: query --at and --pc, diff and its exit codes.
set -uo pipefail
tool="$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
expect_rc() { local want=$1; shift; "$@" > "$work/out" 2>&1; local rc=$?; [ $rc -eq "$want" ] || { cat "$work/out"; fail "$* gave $rc, not $want"; }; }
expect_out() { grep -qF -- "$1" "$work/out" || { cat "$work/out"; fail "no '$1'"; }; }

"$tool" demo "$work/a" > /dev/null 2>&1 || fail "demo a"
"$tool" demo "$work/b" --vars 6 > /dev/null 2>&1 || fail "demo b"
"$tool" demo "$work/c" --tasks 3 > /dev/null 2>&1 || fail "demo c"
a="$work/a/LINE1.vem"

# The address of a path leads back to it, by address and by segment and offset.
expect_rc 0 "$tool" query "$a" --addr FAST.COUNT
expect_out "address 0x00006C (segment 4, offset 0x0004"
expect_rc 0 "$tool" query "$a" --at 0x6C --task fast
expect_out "FAST       0x006C  seg 4+0x0004  FAST.COUNT  byte 0 of 2"
expect_rc 0 "$tool" query "$a" --at 4:5 --task FAST
expect_out "FAST.COUNT  byte 1 of 2"
expect_rc 0 "$tool" query "$a" --at 108 --task FAST --dec
expect_out "FAST          108  seg 4+4  FAST.COUNT  byte 0 of 2"
expect_rc 2 "$tool" query "$a" --at 0x6C --json
expect_rc 2 "$tool" query "$a" --addr FAST.COUNT --task FAST
expect_rc 0 "$tool" query "$a" --at 0xFFFF
expect_out "0xFFFF: no variable (outside every segment)"
expect_rc 2 "$tool" query "$a" --at 12zz
expect_rc 2 "$tool" query "$a" --at 0x6C --pc FAST:0
expect_rc 1 "$tool" query "$a" --at 0x6C --task NOSUCH

# The statement of a code offset, by unit name or path in any case, and the failures.
expect_rc 0 "$tool" query "$a" --pc fast:0x6
expect_out "C:\\PLANT\\FAST.st+0x0006  line 4"
expect_rc 0 "$tool" query "$a" --pc fast:6 --dec
expect_out "C:\\PLANT\\FAST.st+6  line 4"
expect_rc 0 "$tool" query "$a" --pc 'c:\plant\fast.ST:4'
expect_out "line 4"
expect_rc 1 "$tool" query "$a" --pc FAST:0x600
expect_out "beyond the unit's code (0x"
expect_rc 1 "$tool" query "$a" --pc NOSUCH:0
expect_rc 2 "$tool" query "$a" --pc FAST
expect_rc 1 "$tool" --evem off query "$a" --pc FAST:0

# diff: 0 equal, 1 different, 2 bad usage or a failed load.
expect_rc 0 "$tool" diff "$a" "$a"
expect_out "verdict: equal"
expect_rc 1 "$tool" diff "$a" "$work/b/LINE1.vem"
expect_out "verdict: compatible with reinitialised variables"
expect_out "moved,"
expect_rc 1 "$tool" diff "$a" "$work/c/LINE1.vem" --json
expect_out '"verdict": "incompatible"'
if command -v python3 > /dev/null; then python3 -m json.tool "$work/out" > /dev/null || fail "diff --json is no JSON"; fi
expect_rc 2 "$tool" diff "$a"
expect_rc 2 "$tool" diff "$a" "$work/missing.vem"
head -c 300 "$a" > "$work/cut.vem"
expect_rc 2 "$tool" diff "$work/cut.vem" "$a"
echo "vemtool lookup ok"
