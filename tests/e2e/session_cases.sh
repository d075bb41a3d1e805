#!/usr/bin/env bash
# `keepcut session` end to end on a small generated picture: a session that
# strokes, fills, selects, computes and shows writes every file it promises,
# and each kind of bad script ends in one line naming the operation, with
# exit status 1 and nothing written.
set -uo pipefail
tool=$1
work=$2
rm -rf "$work" && mkdir -p "$work"
"$tool" demo --size 160 -o "$work/demo" > /dev/null || { echo "demo failed"; exit 1; }
picture=$work/demo/picture.png   # 160 x 120
status=0

cat > "$work/good.json" <<'JSON'
[
  {"op": "cut", "from": [2, 2], "to": [157, 2], "radius": 3},
  {"op": "cut", "from": [2, 117], "to": [157, 117], "radius": 3},
  {"op": "fill", "at": [1, 60], "with": "cut"},
  {"op": "keep", "from": [80, 60], "to": [81, 60], "radius": 25},
  {"op": "alpha", "from": [30, 60], "to": [31, 60], "radius": 1, "value": 100},
  {"op": "gradient", "from": [120, 40], "to": [130, 50], "radius": 2, "start": 10, "end": 200},
  {"op": "colour-range", "from": [5, 60], "to": [10, 60], "radius": 2, "colour": [0, 255, 0],
   "tolerance": 30, "select": "cut"},
  {"op": "hair", "from": [110, 30], "to": [118, 36], "radius": 3, "hair": [235, 110, 50],
   "background": [60, 170, 150]},
  {"op": "compute"},
  {"op": "compute", "region": [100, 20, 40, 40], "merge": "add", "foreground": true},
  {"op": "show", "mode": 2, "file": "codes.png", "desaturate": 0.5}
]
JSON
if ! "$tool" session "$picture" "$work/good.json" -o "$work/good" > "$work/good.log" 2>&1; then
  echo "good session failed:"; cat "$work/good.log"; status=1
fi
for f in map.png matte.png cutout.png codes.png; do
  [ -s "$work/good/$f" ] || { echo "good session wrote no $f"; status=1; }
done

# script | the one line expected on stderr
bad_cases=(
  '[{"op": "cut", "from": [1, 1], "to": [2, 2], "radius": 1}, {"op": "paint"}]|script operation 2 (paint): unknown operation "paint"'
  '[{"op": "keep", "from": [1, 1], "radius": 1}]|script operation 1 (keep): missing field "to"'
  '[{"op": "hair", "from": [1, 1], "to": [160, 5], "radius": 1, "hair": [1,2,3], "background": [4,5,6]}]|script operation 1 (hair): point (160, 5) lies outside the 160x120 picture'
  '[{"op": "fill", "at": [3, 3], "with": "green"}]|script operation 1 (fill): "with" must be one of band, cut, keep'
  '[{"op": "compute", "region": [150, 0, 20, 20]}]|script operation 1 (compute): region must lie inside the 160x120 picture'
  '[{"op": "show", "mode": 3, "hi": 9, "lo": 9, "file": "x.png"}]|script operation 1 (show): "hi" and "lo" must differ'
  '{"op": "compute"}|script must be a JSON list of operations'
  '[{"op": "compute"},]|script is not valid JSON'
)
i=0
for c in "${bad_cases[@]}"; do
  i=$((i + 1))
  printf '%s' "${c%%|*}" > "$work/bad$i.json"
  "$tool" session "$picture" "$work/bad$i.json" -o "$work/bad$i" 2> "$work/bad$i.err" > /dev/null
  rc=$?
  if [ $rc -ne 1 ] || ! grep -qF -- "${c#*|}" "$work/bad$i.err" || [ -e "$work/bad$i" ]; then
    echo "bad script $i: exit $rc, stderr: $(cat "$work/bad$i.err")"; status=1
  fi
done
[ $status -eq 0 ] && echo "session cases passed"
exit $status
