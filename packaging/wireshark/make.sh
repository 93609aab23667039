#!/bin/sh
# Makes the tables of mirta.lua out of docs/protocols.md, in place; run it when a table there has changed.
#   make.sh            writes mirta.lua
#   make.sh --check    only tells by its exit status whether mirta.lua is what it would write
set -eu
cd "$(dirname "$0")"
made=$(mktemp)
trap 'rm -f "$made"' EXIT

# The rows of each section whose heading names a layout, as Lua: offset, type, names, meaning.
awk '
    function cell(i) { gsub(/^ +| +$/, "", field[i]); gsub(/"/, "\\\"", field[i]); return field[i] }
    FNR == NR && /^#/ {
        proto = ""
        if (/^## Motion controller: status datagram/) proto = "cml75"
        if (/^### KVS, [0-9]+ bytes/) proto = "kvs"
        if (/^### KVK, [0-9]+ bytes/) proto = "kvk"
        if (/^## Vacuum controllers: TCP packet/) proto = "constant"
        next
    }
    FNR == NR && states == "" { # a sentence, over the ends of lines
        text = text " " $0
        if (match(text, /States of pumps and valves: [^.]*\./))
            states = substr(text, RSTART + 28, RLENGTH - 29)
    }
    FNR == NR && /^One record of a constants packet/ { records = 1 }
    FNR == NR && proto != "" && /^\| [0-9]+ \|/ {
        count = split($0, field, "|")
        if (proto == "constant" && !records) next
        names = cell(4)
        meaning = count > 5 ? cell(5) : names
        if (proto == "constant") names = cell(2) == "0" ? "id" : cell(2) == "4" ? "value" : "text"
        rows[proto] = rows[proto] sprintf("    {%s, \"%s\", \"%s\", \"%s\"},\n", cell(2), cell(3), names, meaning)
        next
    }
    FNR == NR { next }
    /^-- made from docs\/protocols.md/ {
        print
        split("cml75 kvs kvk constant", order, " ")
        for (i = 1; i <= 4; ++i) printf "rows.%s = {\n%s}\n", order[i], rows[order[i]]
        printf "local states = \"%s\"\n", states
        inside = 1
        next
    }
    /^-- end of what is made/ { inside = 0 }
    !inside { print }
' ../../docs/protocols.md mirta.lua >"$made"

if [ "${1:-}" = --check ]; then
    cmp "$made" mirta.lua
else
    cp "$made" mirta.lua
fi
