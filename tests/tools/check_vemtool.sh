#!/usr/bin/env bash
# The command-line tool end to end, as a user meets it: every command, its standard output, its
# standard error and its exit code, every bad input the tool must name, and the demo at its
# smallest, default and largest sizes read back name by name.
#
# Each case is one line:  t RC STDOUT STDERR -- COMMAND...
# RC is the exit code; STDOUT and STDERR are extended regular expressions that must match a line
# ("" for anything, "-" for nothing written at all).
set -uo pipefail
tool=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
here=$(cd "$(dirname "$0")" && pwd)
schema="$here/../../docs/vemtool-json.schema.json"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0
passed=0

t() {
    local rc=$1 out=$2 err=$3
    shift 4  # the three and "--"
    "$@" > out.txt 2> err.txt
    local got=$?
    local why=""
    [ "$got" -eq "$rc" ] || why="exit code $got, not $rc"
    for stream in out err; do
        local want file="$stream.txt"
        [ "$stream" = out ] && want=$out || want=$err
        if [ "$want" = "-" ]; then
            [ -s "$file" ] && why="$why; std$stream not empty"
        elif [ -n "$want" ] && ! grep -Eq -- "$want" "$file"; then
            why="$why; std$stream lacks /$want/"
        fi
    done
    if [ -n "$why" ]; then
        echo "FAIL: $* :$why"
        sed 's/^/  out| /' out.txt | head -20
        sed 's/^/  err| /' err.txt | head -20
        failed=$((failed + 1))
    else
        passed=$((passed + 1))
    fi
}

# A condition on files the tool wrote, with its name.
ok() {
    local name=$1
    shift
    if "$@"; then passed=$((passed + 1)); else echo "FAIL: $name"; failed=$((failed + 1)); fi
}

no_control_characters() { ! LC_ALL=C grep -q '[[:cntrl:]]' <(tr -d '\r\n\t' < "$1"); }

# ---- 1. the demo at its smallest, default and largest sizes, and at the sizes that once broke it
for shape in "--tasks 1 --units 0 --vars 0" "" "--tasks 20 --units 70" "--tasks 20 --units 50 --vars 50" \
             "--tasks=100 --units=100 --vars=5000"; do
    dir="demo${shape// /}"
    # shellcheck disable=SC2086
    t 0 "^== read back as built: [0-9]+ nodes" - -- "$tool" -q demo "$dir" $shape
    t 0 "OK, root" - -- "$tool" check "$dir/LINE1.vem"
    if [[ "$shape" != *5000* ]]; then
        "$tool" dump "$dir/LINE1.vem" > dump.txt
        ok "names of demo $shape are text" no_control_characters dump.txt
    fi
    if [[ "$shape" == "--tasks 20 --units 70" ]]; then
        # More pieces than the writer thread holds: a reader that lags makes the maker wait.
        "$tool" dump "$dir/LINE1.vem" | (sleep 0.2; cat) > dump-slow.txt
        ok "a dump of several megabytes reaches a slow reader whole" \
            test "$(wc -c < dump.txt)" -gt 4194304 -a "$(cmp dump.txt dump-slow.txt && echo same)" = same
    fi
    big="$dir"  # the largest stays for the progress below; its node file names its task files by path
    [[ "$shape" != *5000* ]] && rm -rf "$dir"
done
t 0 "--tasks N +tasks, 1 to 100" - -- "$tool" demo --help
t 0 "--vars N +extra INT variables per task, 0 to 5000" - -- "$tool" help demo
t 2 - "--tasks takes 1 to 100" -- "$tool" demo --tasks 0
t 2 - "--tasks takes 1 to 100" -- "$tool" demo --tasks 101
t 2 - "--units takes 0 to 100" -- "$tool" demo --units 101
t 2 - "--vars takes 0 to 5000" -- "$tool" demo --vars 5001
t 0 "cross reference of FAST.COUNT \(3 places\)" - -- "$tool" demo demo
ok "demo picture" grep -q "</svg>" demo/tree.svg
node=demo/LINE1.vem
t 0 "" - -- "$tool" --evem off demo demo-off

# ---- 2. conventions
t 0 "^vemtool [0-9.]+$" - -- "$tool" --version
t 0 "^library [0-9]+$" - -- "$tool" --version
stamp=$(dd if="$node" bs=1 skip=2 count=24 2> /dev/null)
t 0 "^node file stamp $stamp$" - -- "$tool" --version
t 0 "^usage: vemtool \[OPTIONS\] COMMAND" - -- "$tool" --help
for command in demo dump tree segments query export html diff check header help; do
    t 0 "^  $command " - -- "$tool" --help
done
t 2 - "usage: vemtool" -- "$tool"
t 2 - "unknown command 'frobnicate'" -- "$tool" frobnicate
t 0 "^usage: vemtool query FILE" - -- "$tool" help query
"$tool" query --help > help1.txt
"$tool" help query > help2.txt
ok "help query is query --help" cmp -s help1.txt help2.txt
t 0 "^usage: vemtool segments" - -- "$tool" segments -h
t 2 - "unknown option --frob" -- "$tool" dump "$node" --frob
t 2 - "-o needs a value OUT" -- "$tool" dump "$node" -o
t 2 - "--unit takes no value" -- "$tool" header x.st --unit=1
t 2 - "query takes one node file" -- "$tool" query --addr FAST.COUNT
t 2 - "query takes one of --addr, --lines, --xref" -- "$tool" query "$node"
t 2 - "--mask takes the letters r, w and c" -- "$tool" query "$node" --xref FAST.COUNT --mask q
t 0 "^FAST.COUNT +address 0x00006C" - -- "$tool" query "$node" --addr=FAST.COUNT
t 0 "^FAST.COUNT +address 0x00006C" - -- "$tool" query --addr FAST.COUNT -- "$node"
t 0 "^\*EXENODE: " - -- "$tool" dump -- "$node"
"$tool" dump "$node" > dump1.txt
t 0 "" - -- "$tool" dump "$node" -o dump2.txt
ok "dump -o file is the dump" cmp -s dump1.txt dump2.txt
t 0 "^\*EXENODE: " - -- "$tool" dump "$node" -o -
ok "-o - makes no file named -" test ! -e -
t 0 "OK, root" - -- sh -c "\"$tool\" check - < $node"
t 0 "^\*EXENODE: " - -- sh -c "\"$tool\" dump - < $node"
t 1 - "cannot write standard output: No space left on device" -- sh -c "\"$tool\" dump $node > /dev/full"
t 1 - "cannot write standard output: No space left on device" -- sh -c "\"$tool\" export $node --json > /dev/full"
t 1 - "cannot write standard output: No space left on device" -- sh -c "\"$tool\" tree $node > /dev/full"
t 1 - "cannot write /dev/full: No space left on device" -- "$tool" dump "$node" -o /dev/full
t 1 - "cannot write standard output: Broken pipe" -- bash -c "\"$tool\" export $node --json | head -c 1 > /dev/null; exit \${PIPESTATUS[0]}"
printf '$BEGIN_ZQ_HEADER\r\nCHECK = 7\r\n$END_ZQ_HEADER\r\nPROGRAM Main\r\nEND_PROGRAM\r\n' > main.st
printf '$BEGIN_ZQ_HEADER\nCHECK = 7\n$END_ZQ_HEADER\nPROGRAM Main\nEND_PROGRAM\n' > lf.st
t 0 - - -- "$tool" header main.st --set CHECK=42
t 0 "^42$" - -- "$tool" header main.st --get CHECK
t 0 "^42$" - -- sh -c "\"$tool\" header - --get CHECK < main.st"
t 0 "^PROGRAM Main$" - -- "$tool" header main.st --unit
t 0 "^PROGRAM Main$" - -- "$tool" header lf.st --unit
t 1 - "main.st: no key NOSUCH in the header block" -- "$tool" header main.st --get NOSUCH
t 2 - "header takes one of --get, --set, --unit" -- "$tool" header main.st

# ---- 3. messages that say what and where
head -c 300 "$node" > cut.vem
t 1 - "cut.vem: truncated node file: it ends at byte offset [0-9]+ of 300, reading a record of class CVem" -- "$tool" check cut.vem
t 1 - "cause: archive exception, end of file \(3\)" -- "$tool" check cut.vem
head -c 100 /dev/urandom > random.bin
printf '\x01\x00' | dd of=random.bin bs=1 seek=0 conv=notrunc 2> /dev/null
t 1 - "random.bin: not a node file: no version stamp \"Norvadis_VEM_Version:003\" at byte 2; found instead bytes" -- "$tool" dump random.bin
echo "hello, this is no node file" > text.txt
t 1 - "not a node file: .*found instead text \"llo, this is no node file" -- "$tool" tree text.txt
: > empty.vem
t 1 - "empty.vem: the file is empty" -- "$tool" check empty.vem
t 1 - "cannot open missing.vem: file not found" -- "$tool" dump missing.vem
t 1 - "FAST.tsk: a task file \(an object of class CVemTuiTaskNode with no version stamp\), not a node file" -- "$tool" check demo/FAST.tsk
t 1 - "try: vemtool export --object demo/FAST.tsk" -- "$tool" export demo/FAST.tsk --json
t 0 "OK, root FAST of type 16" - -- "$tool" check --object demo/FAST.tsk
t 1 - "LINE1.vem: a node file \(root of type 12 Exe, version stamp at byte 2\), not a task file" -- "$tool" dump --object "$node"
t 1 - "written with the statement model switched off and reads with --evem off" -- "$tool" check demo-off/LINE1.vem
t 1 - "try: vemtool --evem off query demo-off/LINE1.vem" -- "$tool" query demo-off/LINE1.vem --addr FAST.COUNT
t 1 - "written with the statement model switched on and reads with --evem on" -- "$tool" --evem off check "$node"
t 1 - "written with the statement model switched off and reads with --evem off" -- "$tool" check --object demo-off/FAST.tsk
t 0 "OK" - -- "$tool" --evem off check demo-off/LINE1.vem
sed 's/Norvadis_VEM_Version:003/Norvadis_VEM_Version:002/' "$node" > old.vem
t 1 - "another version stamp: \"Norvadis_VEM_Version:002\" at byte 2, this library reads \"Norvadis_VEM_Version:003\"" -- "$tool" check old.vem
# The first child's type byte (offset 40 of a root named "C:\PLANT\LINE1.obj") made unknown.
cp "$node" badtype.vem
printf '\x63' | dd of=badtype.vem bs=1 seek=$((27 + 4 + 1 + 19 + 4 + 1 + 2)) conv=notrunc 2> /dev/null
t 1 - "badtype.vem: corrupt node file: the load stopped at byte offset [0-9]+ of [0-9]+" -- "$tool" check badtype.vem
t 1 - "cause: archive exception, [a-z ]+ \([0-9]\)" -- "$tool" check badtype.vem

# ---- 3b. the page for a browser: a file that does not load gives what check gives
t 0 "page.html: [0-9]+ nodes, [0-9]+ bytes" - -- "$tool" html "$node" -o page.html
ok "html data" grep -q '<script type="application/json" id="vem-data">{"format":1,' page.html
ok "html address data" grep -q '<script type="application/json" id="vem-addr">{"tasks":\[' page.html
"$tool" check cut.vem > check-out.txt 2> check-err.txt
t 1 - "cut.vem: truncated node file" -- "$tool" html cut.vem -o cut.html
ok "html of a cut file says what check says" cmp -s err.txt check-err.txt
ok "check of a cut file writes nothing on standard output" test ! -s check-out.txt
ok "no page for a cut file" test ! -e cut.html
t 2 - "html needs -o OUT.html" -- "$tool" html "$node"
t 2 - "html takes one node file" -- "$tool" html -o x.html

# ---- 3c. task files after a copy: a resource moved elsewhere loads whole from any working
# directory; one with tasks left out fails unless --partial is given, and says what it tried.
"$tool" -q demo "$work/away" > /dev/null
mv "$work/away" "$work/moved"
moved="$work/moved/LINE1.vem"
t 0 "OK, root" - -- sh -c "cd / && \"$tool\" check \"$moved\""
t 0 "^FAST.COUNT +address 0x00006C" - -- sh -c "cd \"$work/moved\" && \"$tool\" query LINE1.vem --addr FAST.COUNT"
t 1 "" "task FAST left out: file not found" -- "$tool" check "$moved" --no-search
mkdir tasks && mv moved/SLOW.tsk tasks/slow.TSK
t 1 - "task SLOW left out: file not found" -- "$tool" query "$moved" --addr FAST.COUNT
t 1 - "tried $work/moved/SLOW.tsk" -- "$tool" query "$moved" --addr FAST.COUNT
t 1 - "1 task\(s\) left out, the tree is not whole; --task-dir DIR says where" -- "$tool" query "$moved" --addr FAST.COUNT
t 1 "not every task came back from its file" "did not come back from their files" -- "$tool" check "$moved"
t 1 - "cannot write|task SLOW left out" -- "$tool" html "$moved" -o moved.html
ok "no page for a tree with tasks left out" test ! -e moved.html
t 0 "^GLOBAL.LINESPEED +address" "the tree is not whole \(going on\)" -- "$tool" query "$moved" --addr GLOBAL.LINESPEED --partial
t 0 "not every task came back from its file" "" -- "$tool" check "$moved" --partial
t 0 "OK, root" - -- "$tool" --task-dir "$work/none" --task-dir "$work/tasks" check "$moved"
t 0 "OK, root" - -- "$tool" check "$moved" --task-dir="$work/tasks"
t 0 "verdict: equal" "" -- "$tool" diff "$moved" "$node" --task-dir "$work/tasks"
t 2 - "--task-dir needs a value DIR" -- "$tool" check "$moved" --task-dir
t 2 - "--partial is for a command that loads a node file" -- "$tool" --partial header main.st --unit
t 2 - "unknown option --no-search" -- "$tool" header main.st --unit --no-search
# Stored names of a Windows machine that is not here, the files in upper case.
"$tool" -q demo "$work/win" > /dev/null
python3 - "$work/win" <<'PY' || { echo "FAIL: rewriting the stored names"; failed=$((failed + 1)); }
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
t 0 "TASKS: 2 tasks, 2 compiled, 2 loaded" - -- sh -c "cd / && \"$tool\" check \"$work/win/LINE1.VEM\""
t 0 "^SLOW.COUNT +address" - -- sh -c "cd \"$work/win\" && \"$tool\" query LINE1.VEM --addr FAST.COUNT --addr SLOW.COUNT"

# ---- 4. tree as text
t 0 "^      Count : INT +Variable +Int +4:0x0004  @0x00006C  size 2$" - -- "$tool" tree "$node"
t 0 "^    FAST +TuiTask +data +4:0x0000  @0x000068  size 60$" - -- "$tool" tree "$node" --depth 2
ok "tree --depth 1 has the root and its children" test "$("$tool" tree "$node" --depth 1 | wc -l)" -eq 3
t 0 "^  Busy : BOOL +Variable +Bool +4:0x0002  @0x000086  size 1$" - -- "$tool" tree "$node" --path fast.stations[1]
t 1 - "FAST.NOPE not found" -- "$tool" tree "$node" --path FAST.NOPE
t 0 "t.svg: [0-9]+ nodes painted" - -- "$tool" tree "$node" -o t.svg --expand-all
ok "tree picture" grep -q "</svg>" t.svg
t 2 - "--expand-all is for the picture" -- "$tool" tree "$node" --expand-all
t 2 - "--depth takes a number of levels" -- "$tool" tree "$node" --depth x

# ---- 5. segments
t 0 "^segment table of RESOURCE: " - -- "$tool" segments "$node"
t 0 "^segment table of FAST: pou name \"\", start number 0, 4 segments, checksum 0x[0-9A-F]{8}$" - -- "$tool" segments "$node"
t 0 "^     4  1 Data +60  1 +little  CVemByteArray +0x003C[0-9A-F]{4}$" - -- "$tool" segments "$node" --task fast
t 0 "^  000000  3C 00 01 08 00 00" - -- "$tool" segments "$node" --task FAST --hex 4
t 0 "^segment 1 of RESOURCE: TaskDef" - -- "$tool" segments "$node" --task resource --hex 1
t 1 - "FAST has no segment 99" -- "$tool" segments "$node" --task FAST --hex 99
t 1 - "no segment table of NOPE; there are: RESOURCE FAST SLOW GLOBAL" -- "$tool" segments "$node" --task NOPE
t 2 - "--hex needs --task" -- "$tool" segments "$node" --hex 1

# ---- 6. query
t 0 "^FAST.COUNT +address 0x00006C \(segment 4, offset 0x0004, size 2, Variable Count : INT\)$" - -- "$tool" query "$node" --addr FAST.COUNT
t 0 "^fast.count +address 108 +\(segment 4, offset 4, size 2" - -- "$tool" query "$node" --addr fast.count --dec
t 0 "^FAST.SPEEDS\[2\] +address 0x00007A " - -- "$tool" query "$node" --addr 'FAST.SPEEDS[2]'
t 0 "^FAST.STATIONS\[1\] +address 0x000084 .*size 4" - -- "$tool" query "$node" --addr 'FAST.STATIONS[1]'
t 0 "^FAST.STATIONS\[1\].BUSY +address 0x000086 " - -- "$tool" query "$node" --addr 'FAST.STATIONS[1].BUSY'
t 0 "^GLOBAL.RECIPE +address 0x000018 \(segment 2, offset 0x0008, size 18, Struct" - -- "$tool" query "$node" --addr GLOBAL.RECIPE
t 0 "^GLOBAL.MATRIX\[1,3\] +address 0x000036 .*element by the layout rules : INT" - -- "$tool" query "$node" --addr 'GLOBAL.MATRIX[1,3]'
t 0 "^global.matrix\[ 2 , 4 \] +address 0x000040 " - -- "$tool" query "$node" --addr 'global.matrix[ 2 , 4 ]'
t 0 "^GLOBAL.SHELVES\[2\].BUSY +address 0x000048 \(segment 2, offset 0x0038, size 1" - -- "$tool" query "$node" --addr 'GLOBAL.SHELVES[2].BUSY'
t 0 "^FAST.DEB0.Q +address 0x000062 " - -- "$tool" query "$node" --addr FAST.DEB0.Q
t 1 - "GLOBAL.MATRIX\[3,1\] not found: index 3 of GLOBAL.MATRIX outside 0..2" -- "$tool" query "$node" --addr 'GLOBAL.MATRIX[3,1]'
t 1 - "GLOBAL.MATRIX\[1\] not found: GLOBAL.MATRIX has 2 dimensions, not 1" -- "$tool" query "$node" --addr 'GLOBAL.MATRIX[1]'
t 1 - "nearest known paths: FAST.COUNT" -- "$tool" query "$node" --addr FAST.CONT
t 1 - "FAST.CONT not found: no CONT in FAST" -- "$tool" query "$node" --addr FAST.CONT
t 1 - "NOTASK.X not found: no compiled task NOTASK" -- "$tool" query "$node" --addr NOTASK.X
t 0 "\"address\": 122," - -- "$tool" query "$node" --addr 'FAST.SPEEDS[2]' --json
t 0 "^  line    3 -> code offset 0x0000  \(LdVariableStmtNode\)$" - -- "$tool" query "$node" --lines fast
t 0 "^line map of C:.PLANT.FAST.st \(12 lines\)$" - -- "$tool" query "$node" --lines c:/plant/fast.ST
t 0 "^line map of C:.PLANT.DEBOUNCE.st" - -- "$tool" query "$node" --lines debounce.st
t 0 "^  line   10 -> code offset     40  \(CalFbStmtNode\)$" - -- "$tool" query "$node" --lines FAST --dec
t 0 "\"statementTypeName\": \"CalFbStmtNode\"" - -- "$tool" query "$node" --lines FAST --json
t 1 - "no unit NONE" -- "$tool" query "$node" --lines NONE
t 0 "^  C:.PLANT.FAST.st +line   10  call$" - -- "$tool" query "$node" --xref FAST.DEB0 --mask c
t 0 "\"kind\": \"write\"" - -- "$tool" query "$node" --xref fast.count --json
t 1 - "no statement model" -- "$tool" --evem off query demo-off/LINE1.vem --lines FAST
for args in "--addr FAST.COUNT --addr GLOBAL.MATRIX[0,1] --json" "--lines FAST --json" "--xref FAST.COUNT --json"; do
    # shellcheck disable=SC2086
    "$tool" query "$node" $args > q.json
    ok "query $args is JSON" python3 -m json.tool q.json > /dev/null
done

# ---- 7. export against its schema
t 0 - - -- "$tool" export "$node" --json -o e.json
ok "export starts with its schema" grep -q '^  "schema": "vem32/1",$' e.json
"$tool" export "$node" --json --compact > c.json
ok "export --compact is one line" test "$(wc -l < c.json)" -eq 1
ok "export --compact is the same JSON" python3 -c "import json,sys; sys.exit(json.load(open('c.json')) != json.load(open('e.json')))"
ok "export has statement fields" grep -q '"ucodeOffset": 40' e.json
ok "export names enumerations" grep -q '"typeName": "CalFbStmtNode"' e.json
ok "export has absolute addresses" grep -q '"absoluteAddress": 108' e.json
t 2 - "export needs --json" -- "$tool" export "$node"
validator=""
for python in /usr/bin/python3 python3; do
    if "$python" -c "import jsonschema" 2> /dev/null; then validator=$python; break; fi
done
if [ -z "$validator" ] && [ "$(id -u)" -eq 0 ] && command -v apt-get > /dev/null; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq python3-jsonschema > /dev/null 2>&1 && validator=/usr/bin/python3
fi
if [ -n "$validator" ]; then
    "$tool" --evem off export demo-off/LINE1.vem --json > off.json
    for f in e.json off.json; do
        ok "$f follows the schema" "$validator" -c "
import json, sys, jsonschema
schema = json.load(open('$schema'))
jsonschema.Draft202012Validator.check_schema(schema)
errors = list(jsonschema.Draft202012Validator(schema).iter_errors(json.load(open('$f'))))
for e in errors[:5]: print(e.message, list(e.absolute_path))
sys.exit(1 if errors else 0)"
    done
else
    echo "FAIL: no python3 with jsonschema (apt-get install python3-jsonschema)"
    failed=$((failed + 1))
fi

# ---- 8. progress on a terminal, -q to keep it quiet
if command -v script > /dev/null; then
    VEMTOOL_PROGRESS_DELAY=0 script -qec "\"$tool\" export $big/LINE1.vem --json > /dev/null" /dev/null > progress.txt
    ok "progress on a terminal" grep -Eq "vemtool: export +[0-9]+%" progress.txt
    VEMTOOL_PROGRESS_DELAY=0 script -qec "\"$tool\" -q export $big/LINE1.vem --json > /dev/null" /dev/null > quiet.txt
    ok "no progress with -q" test ! -s quiet.txt
    VEMTOOL_PROGRESS_DELAY=0 "$tool" export $big/LINE1.vem --json 2> stderr.txt > /dev/null
    ok "no progress when standard error is no terminal" test ! -s stderr.txt
    rm -rf "$big"
fi

echo "vemtool: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
