#!/usr/bin/env bash
# The command-line tool end to end: demo, dump, check, query, export, header, exit codes.
set -uo pipefail
tool="$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
expect_rc() { local want=$1; shift; "$@" > "$work/out" 2>&1; local rc=$?; [ $rc -eq "$want" ] || { cat "$work/out"; fail "$* gave $rc, not $want"; }; }

expect_rc 0 "$tool" demo "$work/demo"
grep -q "cross reference of FAST.COUNT (3 places)" "$work/out" || fail "demo output"
grep -q "<svg" "$work/demo/tree.svg" || fail "demo picture"
grep -q "</svg>" "$work/demo/tree.svg" || fail "demo picture end"
node="$work/demo/LINE1.vem"

# The tool's dump is the library's dump of the same tree.
"$tool" dump "$node" > "$work/dump-stdout.txt" || fail "dump"
expect_rc 0 "$tool" dump "$node" -o "$work/dump-file.txt"
cmp -s "$work/dump-stdout.txt" "$work/dump-file.txt" || fail "dump differs"
grep -q "^\*EXENODE: " "$work/dump-stdout.txt" || fail "dump text"

# A node file cut short names its failure and where it stopped.
head -c 300 "$node" > "$work/cut.vem"
expect_rc 1 "$tool" check "$work/cut.vem"
grep -q "failure: archive exception" "$work/out" || fail "check failure kind"
grep -q "offset:" "$work/out" || fail "check offset"
expect_rc 0 "$tool" check "$node"

expect_rc 0 "$tool" query "$node" --addr FAST.COUNT --addr GLOBAL.RECIPE.TARGET
expect_rc 1 "$tool" query "$node" --addr FAST.NOSUCH
expect_rc 0 "$tool" query "$node" --lines 'C:\PLANT\FAST.st'
expect_rc 1 "$tool" query "$node" --lines 'C:\PLANT\NONE.st'
expect_rc 0 "$tool" query "$node" --xref FAST.DEB0 --mask c
grep -q "line   10  call" "$work/out" || fail "xref of a call"

"$tool" export "$node" --json > "$work/tree.json" || fail "export"
if command -v python3 > /dev/null; then python3 -m json.tool "$work/tree.json" > /dev/null || fail "export is no JSON"; fi
expect_rc 0 "$tool" tree "$node" -o "$work/t.svg" --expand-all

# The page; a file that does not load gives what check gives.
expect_rc 0 "$tool" html "$node" -o "$work/page.html"
grep -q '<script type="application/json" id="vem-data">{"format":1,' "$work/page.html" || fail "html data"
"$tool" check "$work/cut.vem" > "$work/check.txt"
expect_rc 1 "$tool" html "$work/cut.vem" -o "$work/cut.html"
cmp -s "$work/out" "$work/check.txt" || fail "html of a cut file says other than check"
expect_rc 2 "$tool" html "$node"
# A resource moved elsewhere loads whole from any working directory; one with tasks left out fails
# unless --partial is given, and says what it tried.
mv "$work/demo" "$work/moved"
(cd / && expect_rc 0 "$tool" check "$work/moved/LINE1.vem") || exit 1
(cd "$work/moved" && expect_rc 0 "$tool" query LINE1.vem --addr FAST.COUNT) || exit 1
expect_rc 1 "$tool" check "$work/moved/LINE1.vem" --no-search
mkdir "$work/tasks" && mv "$work/moved/SLOW.tsk" "$work/tasks/slow.TSK"
expect_rc 1 "$tool" query "$work/moved/LINE1.vem" --addr FAST.COUNT
grep -q "task SLOW left out: file not found" "$work/out" || fail "missing task message"
grep -q "tried $work/moved/SLOW.tsk" "$work/out" || fail "names tried"
expect_rc 0 "$tool" query "$work/moved/LINE1.vem" --addr GLOBAL.LINESPEED --partial
expect_rc 0 "$tool" --task-dir "$work/none" --task-dir "$work/tasks" check "$work/moved/LINE1.vem"
expect_rc 2 "$tool" check "$work/moved/LINE1.vem" --task-dir
if command -v python3 > /dev/null; then
    # Stored names of a Windows machine that is not here, the files in upper case.
    "$tool" demo "$work/win" > /dev/null || fail "demo for Windows names"
    python3 - "$work/win" <<'PY' || fail "rewriting the stored names"
import os, sys
d = sys.argv[1]
node = os.path.join(d, "LINE1.vem")
data = open(node, "rb").read()
for task in ("FAST", "SLOW"):
    old = f"{d}/{task}.tsk".encode()
    new = f"C:\\NOWHERE\\PLANT\\{task}.TSK".encode()
    assert bytes([len(old)]) + old in data
    data = data.replace(bytes([len(old)]) + old, bytes([len(new)]) + new)
    os.rename(os.path.join(d, f"{task}.tsk"), os.path.join(d, f"{task}.TSK"))
open(os.path.join(d, "LINE1.VEM"), "wb").write(data)
os.remove(node)
PY
    (cd / && expect_rc 0 "$tool" check "$work/win/LINE1.VEM") || exit 1
    grep -q "TASKS: 2 tasks, 2 compiled, 2 loaded" "$work/out" || fail "Windows names: tasks"
    (cd "$work/win" && expect_rc 0 "$tool" query LINE1.VEM --addr FAST.COUNT --addr SLOW.COUNT) || exit 1
fi

printf '$BEGIN_ZQ_HEADER\r\nCHECK = 7\r\n$END_ZQ_HEADER\r\nPROGRAM Main\r\nEND_PROGRAM\r\n' > "$work/main.st"
expect_rc 0 "$tool" header "$work/main.st" --set CHECK=42
expect_rc 0 "$tool" header "$work/main.st" --get CHECK
grep -qx "42" "$work/out" || fail "header value"
expect_rc 0 "$tool" header "$work/main.st" --unit
grep -qx "PROGRAM Main" "$work/out" || fail "header unit"

expect_rc 2 "$tool"
expect_rc 2 "$tool" frobnicate
expect_rc 2 "$tool" query "$node"
expect_rc 2 "$tool" demo --tasks zero
expect_rc 0 "$tool" query --help
expect_rc 1 "$tool" dump "$work/missing.vem"
echo "vemtool ok"
