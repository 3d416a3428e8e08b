#!/usr/bin/env python3
"""Lines and branches of the library that one coverage run reached and another does not.

    scripts/coverage.sh -t -d before.json     (on the old tree)
    scripts/coverage.sh -t -d after.json      (on the new tree)
    scripts/coverage_lost.py before.json[=ROOT] after.json[=ROOT]

Lines are matched by file and text, not by number, so edits elsewhere in a file do not count as a
loss. ROOT is the source tree a run was made on (default: the current directory). Exit status 1 when anything was lost, with each lost line listed as file:line.
"""
import json
import os
import sys


def reached(arg):
    path, _, root = arg.partition("=")
    out = {}
    for f in json.load(open(path))["files"]:
        try:
            text = open(os.path.join(root or ".", f["file"]), encoding="latin-1").read().split("\n")
        except OSError:
            text = []
        for line in f["lines"]:
            if line.get("gcovr/noncode"):
                continue
            n = line["line_number"]
            key = (f["file"], text[n - 1].strip() if n <= len(text) else str(n))
            hit = line["count"] > 0
            branches = [b["count"] > 0 for b in line.get("branches", [])]
            seen = out.setdefault(key, [False, [], n])
            seen[0] = seen[0] or hit
            # Repeated texts in a file (a closing brace) fold into one key: reached if any is.
            if len(branches) > len(seen[1]):
                seen[1] += [False] * (len(branches) - len(seen[1]))
            for i, b in enumerate(branches):
                seen[1][i] = seen[1][i] or b
    return out


def main():
    if len(sys.argv) != 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    before, after = reached(sys.argv[1]), reached(sys.argv[2])
    after_root = sys.argv[2].partition("=")[2] or "."
    texts = {}
    lost = 0
    for key, (hit, branches, n) in sorted(before.items()):
        now = after.get(key)
        if now is None:
            # Gone from the code, or still in the source but no longer compiled: a template or an
            # inline function that only a removed test used drops out of the count.
            if key[0] not in texts:
                try:
                    with open(os.path.join(after_root, key[0]), encoding="latin-1") as f:
                        texts[key[0]] = {line.strip() for line in f}
                except OSError:
                    texts[key[0]] = set()
            if hit and len(key[1]) > 2 and key[1] in texts[key[0]]:
                print(f"{key[0]}: line no longer compiled by any test: {key[1]}")
                lost += 1
            continue
        if hit and not now[0]:
            print(f"{key[0]}:{now[2]}: line no longer reached: {key[1]}")
            lost += 1
        for i, b in enumerate(branches):
            if b and (i >= len(now[1]) or not now[1][i]):
                print(f"{key[0]}:{now[2]}: branch {i} no longer taken: {key[1]}")
                lost += 1
    print(f"{lost} lines or branches lost", file=sys.stderr)
    return 1 if lost else 0


if __name__ == "__main__":
    sys.exit(main())
