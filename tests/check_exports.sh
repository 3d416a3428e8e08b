#!/usr/bin/env bash
# Every exported name of the library is a defined dynamic symbol, and internal helpers are not.
set -euo pipefail
lib="$1"
names="$2"
symbols=$(nm -DC --defined-only "$lib" | awk '{ $1 = ""; $2 = ""; sub(/^  /, ""); print }')
missing=0
while read -r name; do
    [ -z "$name" ] && continue
    if ! grep -q -E "^${name}(\(|$)" <<<"$symbols"; then
        echo "not exported: $name"
        missing=1
    fi
done <"$names"
for internal in vem::nodetypes::NewForLoad vem::DebugFlagValue vem::TakeNextSerial; do
    if grep -q -E "^${internal}(\(|$)" <<<"$symbols"; then
        echo "exported but internal: $internal"
        missing=1
    fi
done
exit $missing
