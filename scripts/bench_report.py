#!/usr/bin/env python3
"""Writes docs/performance.md from the JSON output of vem32_bench."""
import argparse
import datetime
import json
import os
import platform
import re

SIZES = {0: "small", 1: "medium", 2: "large"}


def load_results(path):
    with open(path) as f:
        data = json.load(f)
    runs = {}
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b["run_name"] if "run_name" in b else b["name"]
        name = re.sub(r"/iterations:\d+", "", name).replace("/real_time", "")
        runs[name] = b
    return data["context"], runs


def seconds(run):
    unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[run.get("time_unit", "ns")]
    return run["real_time"] * unit


def fmt_time(s):
    if s is None:
        return "–"
    if s >= 1:
        return f"{s:.2f} s"
    if s >= 1e-3:
        return f"{s * 1e3:.1f} ms"
    if s >= 1e-6:
        return f"{s * 1e6:.1f} µs"
    return f"{s * 1e9:.0f} ns"


def fmt_num(x, digits=0):
    return f"{x:,.{digits}f}"


def cpu_model():
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "unknown"


def memory_total():
    try:
        with open("/proc/meminfo") as f:
            for line in f:
                if line.startswith("MemTotal"):
                    return f"{int(line.split()[1]) / 1024 / 1024:.1f} GiB"
    except OSError:
        pass
    return "unknown"


class Report:
    def __init__(self, runs, baseline):
        self.runs = runs
        self.baseline = baseline or {}
        self.rows = []
        self.goals = []

    def t(self, name, runs=None):
        run = (runs if runs is not None else self.runs).get(name)
        return seconds(run) if run else None

    def counter(self, name, key, runs=None):
        run = (runs if runs is not None else self.runs).get(name)
        return run.get(key) if run else None

    def row(self, operation, size, name, floor=None, floor_text="", goal="", met=None, value=None, before=None):
        time = self.t(name)
        shown = value if value is not None else fmt_time(time)
        ratio = f"{time / floor:.2f}" if time and floor else "–"
        if before is None:
            bt = self.t(name, self.baseline)
            before = fmt_time(bt) if bt else "–"
        met_text = "" if met is None else ("yes" if met else "**no**")
        self.rows.append((operation, size, shown, before, floor_text or (fmt_time(floor) if floor else "–"), ratio, goal, met_text))

    def goal(self, text, figure, met):
        self.goals.append((text, figure, "yes" if met else "**no**"))


def compute(runs, baseline):
    r = Report(runs, baseline)

    for size in (0, 1, 2):
        s = SIZES[size]
        floor_build = r.t(f"BM_FloorBuildInMemory/{size}")
        floor_read = r.t(f"BM_FloorReadBytes/{size}")
        floor_write = r.t(f"BM_FloorWriteBytes/{size}")
        load = r.t(f"BM_Load/{size}")
        write = r.t(f"BM_Write/{size}")
        large = size == 2
        r.row("Floor: build the same tree in memory", s, f"BM_FloorBuildInMemory/{size}")
        r.row("Floor: read the files' bytes", s, f"BM_FloorReadBytes/{size}")
        r.row("Floor: write the files' bytes", s, f"BM_FloorWriteBytes/{size}")
        r.row("Build through the API", s, f"BM_Build/{size}", floor_build, "build in memory")
        if floor_build and floor_write:
            wf = floor_build + floor_write
            r.row("Write node file and task files", s, f"BM_Write/{size}", wf, f"build + raw write {fmt_time(wf)}",
                  "≤ 1.5" if large else "", (write / wf <= 1.5) if large and write else None)
            if large and write:
                r.goal("Write of the large resource within 1.5 × (build in memory + raw write)",
                       f"{write / wf:.2f} ×", write / wf <= 1.5)
        if floor_build:
            r.row("Load (VemLoadNode)", s, f"BM_Load/{size}", floor_build, "build in memory",
                  "≤ 1.0" if large else "", (load / floor_build <= 1.0) if large and load else None)
            if load and floor_read:
                r.rows.append(("  the same load against reading its bytes", s, fmt_time(load), "–",
                               f"read {fmt_time(floor_read)}", f"{load / floor_read:.1f}",
                               "direction: ≤ 5" if large else "", ""))
            if large and load:
                r.goal("Load of the large resource no slower than build in memory (≤ 1.0 ×)",
                       f"{load / floor_build:.2f} ×", load / floor_build <= 1.0)
        paths = r.counter(f"BM_PathMap/{size}", "variable_paths")
        variables = r.counter(f"BM_Build/{size}", "variables") or 0
        pm = r.t(f"BM_PathMap/{size}")
        r.row(f"Path map of every task ({fmt_num(variables)} variables, {fmt_num(paths or 0)} paths)", s,
              f"BM_PathMap/{size}", goal="< 0.5 s" if large else "", met=(pm < 0.5) if large and pm else None)
        if large and pm:
            r.goal(f"Path map of the {fmt_num(variables)} variables of 20 tasks under 0.5 s", fmt_time(pm), pm < 0.5)
        units = r.counter(f"BM_LineMaps/{size}", "units")
        r.row(f"Line maps of every unit ({fmt_num(units or 0)} units)", s, f"BM_LineMaps/{size}")
        statements = r.counter(f"BM_CrossReference/{size}", "statements")
        r.row(f"Cross reference, one query per unit ({fmt_num(statements or 0)} statements)", s, f"BM_CrossReference/{size}")

    q = r.counter("BM_AddressQueries/2", "queries/s")
    if q:
        bq = r.counter("BM_AddressQueries/2", "queries/s", baseline) if baseline else None
        r.row("1,000,000 address queries (VemGetAbsoluteVariableOffset)", "large", "BM_AddressQueries/2",
              value=f"{fmt_time(r.t('BM_AddressQueries/2'))} = {fmt_num(q / 1e6, 2)} M/s",
              before=f"{fmt_num(bq / 1e6, 2)} M/s" if bq else "–", goal="≥ 1 M/s", met=q >= 1e6)
        r.goal("At least one million address queries per second", f"{fmt_num(q / 1e6, 2)} M/s", q >= 1e6)

    per_element = {}
    for n in (1000, 8000, 65000):
        v = r.counter(f"BM_ExpandArray/{n}", "ns_per_element")
        if v is None:
            continue
        per_element[n] = v
        bv = r.counter(f"BM_ExpandArray/{n}", "ns_per_element", baseline) if baseline else None
        r.row(f"ExpandArray of {fmt_num(n)} elements, into fresh memory", "", f"BM_ExpandArray/{n}",
              value=f"{fmt_time(r.t(f'BM_ExpandArray/{n}'))} = {v:.0f} ns/element",
              before=f"{bv:.0f} ns/element" if bv else "–")
    for n in (1000, 8000, 65000):
        v = r.counter(f"BM_ExpandArrayReusedMemory/{n}", "ns_per_element")
        if v is not None:
            bv = r.counter(f"BM_ExpandArrayReusedMemory/{n}", "ns_per_element", baseline) if baseline else None
            r.row(f"ExpandArray of {fmt_num(n)} elements, into the blocks of a tree just deleted", "",
                  f"BM_ExpandArrayReusedMemory/{n}", value=f"{fmt_time(r.t(f'BM_ExpandArrayReusedMemory/{n}'))} = {v:.0f} ns/element",
                  before=f"{bv:.0f} ns/element" if bv else "–")
    if 1000 in per_element and 65000 in per_element:
        ratio = per_element[65000] / per_element[1000]
        r.goal("ExpandArray linear: time per element at 65,000 within 1.3 × that at 1,000 (fresh memory)",
               f"{ratio:.2f} ×", ratio <= 1.3)
    reused = [r.counter(f"BM_ExpandArrayReusedMemory/{n}", "ns_per_element") for n in (1000, 65000)]

    r.row("AddChildSorted of 10,000 children in shuffled order", "", "BM_AddChildSorted")

    for name, text in (("BM_ByteArrayChecksum64K", "Checksum of a 64 KiB byte array"),
                       ("BM_SegmentTableChecksum1000", "Checksum of a segment table of 1,000 segments")):
        mb = r.counter(name, "MB")
        if mb is None:
            continue
        bmb = r.counter(name, "MB", baseline) if baseline else None
        r.row(text, "", name, value=f"{fmt_num(mb)} MB/s", before=f"{fmt_num(bmb)} MB/s" if bmb else "–",
              goal="≥ 500 MB/s", met=mb >= 500)
        r.goal(text + " at least 500 MB/s", f"{fmt_num(mb)} MB/s", mb >= 500)

    for name, text, goal in (("BM_HFileGetValueScan", "CHFile GetValue, block behind 10 MB of body", True),
                             ("BM_HFileGetValueAbsentKey", "CHFile GetValue of an absent key, block at the end", True),
                             ("BM_HFileGetValue", "CHFile GetValue, block at the start", False),
                             ("BM_HFileSetValue", "CHFile SetValue that moves a 10 MB body", False),
                             ("BM_HFileSetValueSameLength", "CHFile SetValue of the same length", False)):
        rate = r.counter(name, "file_bytes/s")
        if rate is None:
            continue
        if not goal:
            r.row(text, "10 MB", name)
            continue
        brate = r.counter(name, "file_bytes/s", baseline) if baseline else None
        r.row(text, "10 MB", name, value=f"{fmt_time(r.t(name))} = {fmt_num(rate / 1e6)} MB/s",
              before=f"{fmt_num(brate / 1e6)} MB/s" if brate else "–", goal="≥ 200 MB/s", met=rate >= 200e6)
        r.goal(text + ": at least 200 MB/s", f"{fmt_num(rate / 1e6)} MB/s", rate >= 200e6)

    for size in (0, 1):
        if f"BM_Dump/{size}" in runs:
            dump_bytes = r.counter(f"BM_Dump/{size}", "dump_bytes") or 0
            r.row(f"Text dump of the whole resource ({fmt_num(dump_bytes)} bytes)", SIZES[size], f"BM_Dump/{size}")

    # The tool as a user runs it: within twice the library's load plus the raw write of its output.
    load, rate, raw_write = r.t("BM_Load/2"), r.counter("BM_Load/2", "file_bytes/s"), r.t("BM_FloorWriteBytes/2")
    if load and rate and raw_write:
        write_rate = rate * load / raw_write
        for i, command in enumerate(("check", "dump", "tree", "segments", "query --addr", "export --json --compact")):
            name = f"BM_Vemtool/2/{i}"
            if name not in runs:
                continue
            out = r.counter(name, "output_bytes") or 0
            floor = load + out / write_rate
            limit = 2 * load + out / write_rate
            met = r.t(name) <= limit
            cpu = r.counter(name, "child_cpu_ms")  # the tool's own CPU time: what a busy machine does not stretch
            cpu_text = f", {fmt_num(cpu)} ms of CPU" if cpu else ""
            r.row(f"vemtool {command} ({fmt_num(out)} bytes of output{cpu_text})", "large", name, floor,
                  f"load + write of the output {fmt_time(floor)}", goal=f"≤ {fmt_time(limit)}", met=met)
            r.goal(f"vemtool {command} of the large resource within 2 × load + write of its output",
                   f"{fmt_time(r.t(name))} of {fmt_time(limit)}", met)

    per_plain = r.counter("BM_PlainVariableHeap", "bytes_per_node")
    asked = r.counter("BM_PlainVariableHeap", "asked_bytes_per_node")
    allocs = r.counter("BM_PlainVariableHeap", "allocations_per_node")
    heap = runs.get("BM_LoadHeap/2", {})
    if per_plain is not None:
        r.goal("Heap per plain variable node at most 200 bytes", f"{per_plain:.0f} bytes", per_plain <= 200)
    if heap:
        per_node = heap.get("peak_heap_bytes_per_node", 0)
        r.goal("Heap per node of the loaded large resource at most 300 bytes (peak of the load)",
               f"{per_node:.0f} bytes", per_node <= 300)

    debugger_answers(r)
    return r


def debugger_answers(r):
    """The debugger's answers beyond the path map and the line map (bench/bench_debugger.cpp)."""
    build, pm = r.t("BM_AddressIndexBuild/2"), r.t("BM_PathMap/2")
    if build and pm:
        r.row("Address index of every task (VemAddrIndexNew)", "large", "BM_AddressIndexBuild/2", pm, "path map",
              goal="≤ path map", met=build <= pm)
        r.goal("Address index of the large resource built no slower than its path map", f"{build / pm:.2f} ×",
               build <= pm)
    for name, what in (("BM_ReverseAddressQueries/2", "reverse address queries (VemAddrLookup)"),
                       ("BM_CodeOffsetQueries/2", "code offset to statement queries (VemCodeLookup)")):
        q = r.counter(name, "queries/s")
        if q:
            r.row(f"1,000,000 {what}", "large", name, value=f"{fmt_time(r.t(name))} = {fmt_num(q / 1e6, 2)} M/s",
                  goal="≥ 2 M/s", met=q >= 2e6)
            r.goal(f"At least two million {what.split(' (')[0]} per second", f"{fmt_num(q / 1e6, 2)} M/s", q >= 2e6)
    diff, both = r.t("BM_DiffFiles/2"), r.t("BM_LoadBoth/2")
    if diff and both:
        r.row("Layout diff of two large resources, both loads included", "large", "BM_DiffFiles/2", both,
              "load both", goal="≤ 1.5 × load both", met=diff <= 1.5 * both)
        r.goal("Layout diff of two large resources within 1.5 × loading both", f"{diff / both:.2f} ×",
               diff <= 1.5 * both)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("results")
    parser.add_argument("output")
    parser.add_argument("--compiler", default="unknown")
    parser.add_argument("--repetitions", default="1")
    parser.add_argument("--baseline")
    parser.add_argument("--shared")
    args = parser.parse_args()

    context, runs = load_results(args.results)
    baseline = load_results(args.baseline)[1] if args.baseline else None
    r = compute(runs, baseline)
    before_goals = compute(baseline, None).goals if baseline else []
    per_plain = r.counter("BM_PlainVariableHeap", "bytes_per_node")
    asked = r.counter("BM_PlainVariableHeap", "asked_bytes_per_node")
    allocs = r.counter("BM_PlainVariableHeap", "allocations_per_node")
    heap = runs.get("BM_LoadHeap/2", {})
    reused = [r.counter(f"BM_ExpandArrayReusedMemory/{n}", "ns_per_element") for n in (1000, 65000)]
    met = sum(1 for g in r.goals if g[2] == "yes")
    lines = []
    lines.append("# Performance")
    lines.append("")
    lines.append("Generated by `scripts/bench.sh` from the Google Benchmark suite in `bench/` "
                 f"on {datetime.date.today().isoformat()}. Every figure is the median of {args.repetitions} "
                 "repetitions, in wall-clock time.")
    lines.append("")
    lines.append("## Machine")
    lines.append("")
    lines.append(f"- CPU: {cpu_model()}, {context.get('num_cpus', '?')} cores as seen by the process, "
                 f"{context.get('mhz_per_cpu', '?')} MHz")
    caches = ", ".join(f"L{c['level']} {c['type'].lower()} {c['size'] // 1024} KiB" for c in context.get("caches", []))
    if caches:
        lines.append(f"- Caches: {caches}")
    lines.append(f"- Memory: {memory_total()}; system: {platform.system()} {platform.release()}")
    lines.append(f"- Compiler: {args.compiler}; build type Release (-O3)")
    load = context.get("load_avg")
    if load:
        lines.append(f"- Load average when the run began: {', '.join(f'{x:.2f}' for x in load)}")
    if args.shared:
        lines.append(f"- The machine was shared during the run: {args.shared}. Figures can be noisy; the "
                     "median of the repetitions damps it.")
    lines.append("")
    lines.append("## Resources")
    lines.append("")
    lines.append("Generated through the exported functions by `tools/builder/resource_builder.cpp` with the shapes of "
                 "`bench/bench_support.cpp`:")
    lines.append("")
    lines.append("| Size | Tasks | Variables | Nodes | Statements | Bytes on disk |")
    lines.append("|---|---|---|---|---|---|")
    for size in (0, 1, 2):
        b = runs.get(f"BM_Build/{size}", {})
        l = runs.get(f"BM_Load/{size}", {})
        tasks = {0: 2, 1: 10, 2: 20}[size]
        lines.append(f"| {SIZES[size]} | {tasks} | {fmt_num(b.get('variables', 0))} | {fmt_num(l.get('nodes', 0))} | "
                     f"{fmt_num(l.get('statements', 0))} | {fmt_num(l.get('file_bytes', 0))} |")
    lines.append("")
    lines.append("Variables count every leaf: plain variables, array elements, structure members, the variables "
                 "of function blocks and the global variables.")
    lines.append("")
    lines.append("## Floors")
    lines.append("")
    lines.append("- *Read the files' bytes*: the node file and every task file read whole into memory with one "
                 "`read` each.")
    lines.append("- *Write the files' bytes*: the same bytes written to files with one `write` each; the node "
                 "file, as the library writes it, to a file beside it that is made durable (`fsync`) and renamed "
                 "over it.")
    lines.append("- *Build the same tree in memory*: every node, segment and statement of the loaded resource "
                 "made again through the exported functions from a list taken of it beforehand: the same "
                 "objects with the same names and bytes, with no file, no parsing and no computation "
                 "(no offsets, no array expansion).")
    lines.append("")
    lines.append("## Goals")
    lines.append("")
    lines.append(f"{met} of {len(r.goals)} met.")
    lines.append("")
    before = {g[0]: g[1] for g in before_goals}
    lines.append("| Goal | Figure | Before | Met |")
    lines.append("|---|---|---|---|")
    for g in r.goals:
        lines.append(f"| {g[0]} | {g[1]} | {before.get(g[0], '–')} | {g[2]} |")
    lines.append("")
    lines.append("## Figures")
    lines.append("")
    if baseline:
        lines.append("*Before* is the same suite, built the same way, on the code before the optimisations of "
                     "this round (`docs/performance-baseline.json`), run on the same machine shortly before. Floors "
                     "that write files vary from run to run with the disk's flushing (`fsync`); compare ratios "
                     "within one run.")
        lines.append("")
    lines.append("| Operation | Size | Time | Before | Floor | Ratio to floor | Goal | Met |")
    lines.append("|---|---|---|---|---|---|---|---|")
    for row in r.rows:
        lines.append("| " + " | ".join(str(c) for c in row) + " |")
    lines.append("")
    if all(reused):
        lines.append(f"ExpandArray into the blocks of a tree deleted just before takes {reused[0]:.0f} ns per element "
                     f"at 1,000 elements and {reused[1]:.0f} ns at 65,000 ({reused[1] / reused[0]:.2f} ×): the "
                     "work per element is the same, but 65,000 elements take some 27 MB, far beyond the caches, "
                     "while 1,000 take 400 KB, and the allocator walks its lists of freed blocks. Into fresh "
                     "memory, as a compiler expands the arrays of a resource, both sizes cost the same per element.")
        lines.append("")
    lines.append("## Memory")
    lines.append("")
    lines.append("Counted by the allocation functions of the benchmark program (`bench/bench_support.cpp`), "
                 "with the allocator's rounding (`malloc_usable_size`), not its own headers.")
    lines.append("")
    if per_plain is not None:
        lines.append(f"- A plain variable node (`VemCreateCVemVariableNode`, a name of up to 6 characters, "
                     f"added to a task): **{per_plain:.0f} bytes** of heap ({asked:.0f} bytes asked for, "
                     f"{allocs:.1f} allocations): the node object and its link in the parent's list.")
    if heap:
        objects = heap.get('nodes', 0) + (runs.get("BM_Load/2", {}).get("statements", 0))
        lines.append(f"- The large resource loaded: {fmt_num(heap.get('heap_bytes', 0))} bytes of heap for "
                     f"{fmt_num(heap.get('nodes', 0))} nodes, {heap.get('heap_bytes_per_node', 0):.0f} bytes per node "
                     f"(statements, segments and maps included); the peak during the load was "
                     f"{fmt_num(heap.get('peak_heap_bytes', 0))} bytes, **{heap.get('peak_heap_bytes_per_node', 0):.0f} "
                     f"bytes per node**, or {heap.get('peak_heap_bytes', 0) / objects:.0f} bytes per object if its "
                     f"{fmt_num(runs.get('BM_Load/2', {}).get('statements', 0))} statements are counted with the nodes.")
    lines.append("")
    lines.append("### Where a node's bytes go")
    lines.append("")
    lines.append("A plain variable node on a 64-bit system, object and link in the parent's list, before and "
                 "after the node was made lean:")
    lines.append("")
    lines.append("| Part | Before | After |")
    lines.append("|---|---|---|")
    lines.append("| Virtual table pointer | 8 | 8 |")
    lines.append("| `Name`, `ExtraText` | 64: two strings of 32 bytes, room for 15 characters each | 16: one "
                 "word each; up to 6 characters lie in the word, a longer text in a block that its copies share, "
                 "with its length and the count of its holders in front of it (24 bytes of heap for 7 to 15 "
                 "characters, none for a copy) |")
    lines.append("| `Parent`, `LastChild` | 16 | 16 |")
    lines.append("| `Children` (a list: table pointer, head, tail, count) | 32 | 32, whose last 4 bytes hold `Serial` |")
    lines.append("| `HasSymbol`, `Expanded`, `KlikedSymbol`, `Serial`, `NodeType` | 20 in five 32-bit words, "
                 "and 4 of padding | 8: `Expanded` 32 bits, `NodeType` 16, `KlikedSymbol` 8, `HasSymbol` one "
                 "bit beside the two bits of the geometry and of the drawing state |")
    lines.append("| Drawing state of the tree view (points and rectangles of the last `Draw`) | 64 | 0: kept "
                 "beside the tree for the nodes that were drawn |")
    lines.append("| Pointer to the geometry of the node type | 8 | 0: one bit |")
    lines.append("| Fields of the variable: ten of 32 bits, four of 16 bits | 56 with padding | 48 |")
    lines.append("| `TypeName`, `InstanceText`, `PiLocation` | 96 | 24 |")
    lines.append("| The object as asked for / as the allocator gives it | 368 / 376 | 152 / 152 |")
    lines.append("| Link in the parent's list | 24 | 24 |")
    lines.append("| **Total** | **400** in 2 allocations | **176** in 2 allocations (200 with a name of 7 to 15 "
                 "characters) |")
    lines.append("")
    lines.append("Statements are not nodes of the tree, yet they are counted in the heap per node above; the "
                 "large resource holds nearly two per node. A loaded variable operand takes 56 bytes instead of "
                 "104: an operand's name of up to 6 characters no longer costs a string of 32 bytes; what a record "
                 "does not hold and a load thus never sets (type, negation, accumulator, the two nodes behind the "
                 "operand, the high 16 bits of the address mode) lies in a block of 32 bytes made only for a "
                 "statement that a caller gives one of them; and the two offsets and the low 16 bits of the "
                 "address mode fill the 6 bytes behind the code offset that the alignment left empty. The object "
                 "drops from 80 to 56 bytes; a statement that the compiler builds with all of them takes 56 and "
                 "40 bytes.")
    lines.append("")
    lines.append("The large resource loaded, by class (each object of the loaded tree and each statement measured "
                 "with the allocator's rounding, the links counted from the lists, the rest as the difference to "
                 "the meter's total; per node of the tree). *Before* is the code before the nodes were made lean, "
                 "*lean nodes* the one-word string and the packed node, *now* the lean statements as well:")
    lines.append("")
    lines.append("| Objects | Count | Before | Lean nodes | Now |")
    lines.append("|---|---|---|---|---|")
    lines.append("| Nodes (nearly all variables) | 202,365 | 76.1 MB, 376 bytes each: 376 per node | "
                 "30.8 MB, 152 bytes each: 152 per node | 30.8 MB: 152 per node |")
    lines.append("| Links in the child lists | 202,390 | 4.9 MB: 24 per node | 4.9 MB: 24 per node | "
                 "4.9 MB: 24 per node |")
    lines.append("| Statements (variable operands) and code nodes | 390,026 | 40.6 MB, 104 bytes each: 200 per node | "
                 "34.3 MB, 88 bytes each: 170 per node | 21.8 MB, 56 bytes each: 108 per node |")
    lines.append("| Names of 7 characters or more, segments, maps, the rest | | 6.6 MB: 33 per node | "
                 "7.4 MB: 36 per node | 7.3 MB: 36 per node |")
    lines.append("| **Total** | | **128.1 MB: 633 per node** | **77.3 MB: 382 per node** | "
                 "**64.8 MB: 320 per node** |")
    lines.append("")
    lines.append("What stands between the large resource and 300 bytes per node, some 20 bytes: a variable node "
                 "takes 152 bytes, whose ten 32-bit fields (scope, qualifiers, flags, declaration positions) give "
                 "back through their getters whatever a caller set, though a file keeps 8 or 16 bits of most, so "
                 "they cannot be narrowed without a place for the values that do not fit; 16 bytes less would "
                 "bring the node to the allocator's block of 136. The link of each child, 24 bytes, is what a "
                 "list that callers walk and insert into by position costs: a child list without a link per child "
                 "needs positions that stay valid while other children come and go, which a plain array does not "
                 "give. The statements, 108 bytes per node, are two objects of 56 bytes whose fields a record "
                 "fills (the 32-bit kind, line, column, code offset, the two links of the chain, name, two "
                 "offsets, address mode), and the pointer to the block beside them.")
    lines.append("")
    load2 = r.t("BM_Load/2")
    read2 = r.t("BM_FloorReadBytes/2")
    if load2 and read2:
        lines.append(f"Toward a load within 5 × reading the bytes: the large resource loads in {load2 / read2:.1f} × "
                     "the time of reading its files. What stands in the way is the tree's shape: every node, every "
                     "link of a child list and every statement is an object of its own, some 800,000 allocations "
                     f"for {(heap or {}).get('heap_bytes', 0) / 1e6:.0f} MB, well above the 26 MB of the files, and a fresh allocation with its first write "
                     "costs about as much as reading the bytes of the record that fills it. Going further needs "
                     "the objects of one load in a few large blocks, which clashes with deleting single nodes "
                     "through the exported functions, and links inside the nodes instead of a list per parent, "
                     "which changes the `Children` list that callers walk.")
        lines.append("")
    lines.append("## What the hot paths do")
    lines.append("")
    lines.append("- Archives read and write through a buffer of 64 KiB with inline little-endian access; the file "
                 "is called once per buffer, and a bounds check that the buffer can answer does not ask the file. "
                 "A text is copied from the buffer straight into the string's storage: for a name of up to 6 "
                 "characters, into the string's own word.")
    lines.append("- Maps (`CMapStringToOb`, `CMapStringToString`, `CMapWordToOb`) keep their entries in a list in the "
                 "order of entering and index them with an open-addressed table of hashes: a lookup reads one slot "
                 "and one entry, and the key is held once. Path maps and line maps are built and asked through it.")
    lines.append("- Array element names and line map keys are made with `std::to_chars`, in the string's own "
                 "storage when they are short; concatenations of a temporary grow it in place.")
    lines.append("- The cross reference compares each statement's operand once for both kinds of access.")
    lines.append("- Text dumps into a file reach it in pieces of 64 KiB.")
    lines.append("- The executable node takes over the code nodes of a task (`VemAddFilteredEvemNodes`) with a hash "
                 "set of the names it took before, not a walk of their list for every code node.")
    lines.append("- Still quadratic by their nature: `AddChildSorted` walks the list of children for every "
                 "insertion (no order of the list is known beforehand, and node texts can change between calls), "
                 "so n insertions cost n²/2 comparisons of texts.")
    lines.append("- Nothing of this changes a byte written or a result: the whole test suite, with its golden "
                 "files, dumps and round trips, runs unchanged.")
    lines.append("")
    with open(args.output, "w") as f:
        f.write("\n".join(lines))
    print(f"{met} of {len(r.goals)} goals met")


if __name__ == "__main__":
    main()
