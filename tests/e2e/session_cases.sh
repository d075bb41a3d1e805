#!/usr/bin/env bash
# `keepcut session` end to end on a small generated picture: a session that
# strokes, fills, selects, computes and shows writes every file it promises,
# so does one that starts from a GrabCut selection, and each kind of bad
# script ends in one line naming the operation, with exit status 1 and
# nothing written. `keepcut cutout` likewise, for a good and a bad rectangle;
# `keepcut band` makes a trimap that `keepcut matte` takes, and bad folders or
# widths for batch and band end in one line.
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

cat > "$work/grabcut.json" <<'JSON'
[
  {"op": "grabcut-rect", "rect": [20, 10, 120, 100]},
  {"op": "grabcut-stroke", "select": "background", "from": [25, 15], "to": [40, 15], "radius": 2},
  {"op": "grabcut-stroke", "select": "foreground", "from": [80, 60], "to": [82, 60], "radius": 6},
  {"op": "grabcut-edge", "band": 6},
  {"op": "compute", "foreground": true}
]
JSON
if ! "$tool" session "$picture" "$work/grabcut.json" -o "$work/grabcut" > "$work/grabcut.log" 2>&1; then
  echo "GrabCut session failed:"; cat "$work/grabcut.log"; status=1
fi
[ -s "$work/grabcut/cutout.png" ] || { echo "GrabCut session wrote no cutout.png"; status=1; }
if ! "$tool" cutout "$picture" --rect 20,10,120,100 -o "$work/cut.png" --matte "$work/cut_matte.png" \
     --map "$work/cut_map.png" > "$work/cut.log" 2>&1; then
  echo "cutout failed:"; cat "$work/cut.log"; status=1
fi
for f in cut.png cut_matte.png cut_map.png; do
  [ -s "$work/$f" ] || { echo "cutout wrote no $f"; status=1; }
done

# cutout arguments | the one line expected on stderr
cutout_cases=(
  '--rect 100,10,120,100|keepcut: --rect: rectangle 100,10,120,100 does not lie inside the 160x120 picture'
  '--rect 20,10,10,100|keepcut: --rect: rectangle must be more than 10 pixels wide and high'
  '--rect 20,10,100|keepcut: --rect must be four integers X,Y,W,H, not "20,10,100"'
)
for c in "${cutout_cases[@]}"; do
  # shellcheck disable=SC2086
  "$tool" cutout "$picture" ${c%%|*} -o "$work/bad_cut.png" 2> "$work/bad_cut.err" > /dev/null
  rc=$?
  if [ $rc -ne 1 ] || ! grep -qxF -- "${c#*|}" "$work/bad_cut.err" || [ -e "$work/bad_cut.png" ]; then
    echo "cutout ${c%%|*}: exit $rc, stderr: $(cat "$work/bad_cut.err")"; status=1
  fi
done

if ! { "$tool" band "$work/demo/true_alpha.png" --width 8 -o "$work/band.png" &&
       "$tool" matte "$picture" "$work/band.png" -o "$work/band_matte.png"; } > "$work/band.log" 2>&1; then
  echo "band then matte failed:"; cat "$work/band.log"; status=1
fi

mkdir -p "$work/empty"
black=$work/black.pgm
printf 'P5 2 2 255\n\000\000\000\000' > "$black"  # a 2x2 all-black mask
# arguments | a line expected on stderr (exit status not 0, nothing written to out)
cli_cases=(
  "batch $work/none $work/empty -o $work/out|keepcut: picture folder not found: $work/none"
  "batch $work/empty $work/demo -o $work/out|keepcut: picture folder has no files: $work/empty"
  "batch $work/demo $work/demo -o $work/demo|keepcut: the output folder must not be the picture or trimap folder: $work/demo"
  "band $picture --width 0 -o $work/out|--width: Value 0 not in range 1 to 1024"
  "band $black --width 4 -o $work/out|keepcut: mask has no foreground (no byte over 127): $black"
)
for c in "${cli_cases[@]}"; do
  # shellcheck disable=SC2086
  "$tool" ${c%%|*} 2> "$work/cli.err" > /dev/null
  rc=$?
  if [ $rc -eq 0 ] || ! grep -qxF -- "${c#*|}" "$work/cli.err" || [ -e "$work/out" ]; then
    echo "${c%%|*}: exit $rc, stderr: $(cat "$work/cli.err")"; status=1
  fi
done

# script | the one line expected on stderr
bad_cases=(
  '[{"op": "cut", "from": [1, 1], "to": [2, 2], "radius": 1}, {"op": "paint"}]|script operation 2 (paint): unknown operation "paint"'
  '[{"op": "keep", "from": [1, 1], "radius": 1}]|script operation 1 (keep): missing field "to"'
  '[{"op": "hair", "from": [1, 1], "to": [160, 5], "radius": 1, "hair": [1,2,3], "background": [4,5,6]}]|script operation 1 (hair): point (160, 5) lies outside the 160x120 picture'
  '[{"op": "fill", "at": [3, 3], "with": "green"}]|script operation 1 (fill): "with" must be one of band, cut, keep'
  '[{"op": "compute", "region": [150, 0, 20, 20]}]|script operation 1 (compute): region must lie inside the 160x120 picture'
  '[{"op": "show", "mode": 3, "hi": 9, "lo": 9, "file": "x.png"}]|script operation 1 (show): "hi" and "lo" must differ'
  '[{"op": "grabcut-rect", "rect": [0, 0, 20, 20]}, {"op": "grabcut-edge"}, {"op": "grabcut-stroke", "select": "foreground", "from": [1, 1], "to": [2, 2], "radius": 1}]|script operation 3 (grabcut-stroke): no GrabCut selection is open (start one with grabcut-rect)'
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
