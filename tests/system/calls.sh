#!/usr/bin/env bash
# The library calls nothing but what the list says, Qt and the C++ runtime.
# usage: calls.sh NM LIBRARY LIST
set -euo pipefail
nm=$1 library=$2 list=$3

# What a C++ compiler takes as given, wherever it comes from.
runtime='__.*|_ITM_.*|abort|assert|free|malloc|mem(chr|cmp|cpy|move|set)|str(cmp|len)|ceil|floor'
qt='.*@Qt_6.*|_ZNK?7QRegExp.*'
used=$("$nm" -D --undefined-only "$library" | awk '{ print $NF }' | grep -vxE "$qt|.*@(GLIBCXX|CXXABI|GCC)_.*" | sed 's/@.*//')
surplus=$(grep -vxE "$runtime" <<<"$used" | grep -vxF -f "$list" || true)
[ -z "$surplus" ] || { echo "$library calls what is not in $list:"; echo "$surplus"; exit 1; }
unused=$(grep -v '^#' "$list" | grep -vxF -f <(echo "$used") || true)
[ -z "$unused" ] || { echo "$list names what nobody calls:"; echo "$unused"; exit 1; }
