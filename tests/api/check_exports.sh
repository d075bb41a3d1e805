#!/usr/bin/env bash
# The shared library must export exactly the names its version script lists:
# no internal helper, no dependency symbol, and no listed entry missing.
set -euo pipefail
lib=$1
map=$2

expected=$(sed -n '/global:/,/local:/p' "$map" | grep -oE '^[[:space:]]*[A-Za-z_][A-Za-z0-9_]*;' |
           tr -d ' ;' | sort -u)
actual=$(nm -D --defined-only "$lib" | awk '{print $3}' | sed 's/@.*//' | grep -v '^KEEPCUT_' | sort -u)

status=0
extra=$(comm -13 <(echo "$expected") <(echo "$actual"))
missing=$(comm -23 <(echo "$expected") <(echo "$actual"))
if [ -n "$extra" ]; then echo "exported but not listed:"; echo "$extra"; status=1; fi
if [ -n "$missing" ]; then echo "listed but not exported:"; echo "$missing"; status=1; fi
[ $status -eq 0 ] && echo "$(echo "$actual" | wc -l) symbols exported, as listed"
exit $status
