#!/usr/bin/env bash
# The GIMP plug-in in a headless GIMP with a fresh profile: trimap from a
# rectangle selection (all three codes, each where `keepcut cutout` puts it
# for that rectangle), then the matte of the tool's demo
# picture, equal in every pixel to `keepcut matte`'s: with recovered colours
# (equal to the tool's), and on the high-resolution pass without them (the
# layer keeps the picture's colours).
# gimp-console exits 0 even when a batch command fails, so the plug-in's own
# success lines and the exported files decide.
set -euo pipefail
gimp=$1 system_plugins=$2 our_plugins=$3 tool=$4 compare=$5 work=$6
rm -rf "$work" && mkdir -p "$work"

"$tool" demo --size 160 -o "$work/sample" > /dev/null
"$tool" matte "$work/sample/picture.png" "$work/sample/trimap.png" -o "$work/tool_alpha.png" --coarse \
  --foreground "$work/tool_foreground.png" > /dev/null
"$tool" matte "$work/sample/picture.png" "$work/sample/trimap.png" -o "$work/tool_alpha_hires.png" \
  --hires > /dev/null
"$tool" cutout "$work/sample/picture.png" --rect 16,12,128,96 --map "$work/tool_map.png" \
  -o "$work/tool_cutout.png" > /dev/null

# A fresh profile that loads only the plug-ins the run needs (the batch
# interpreter, PNG) besides ours: a first start that queries all of GIMP's
# own (about 120) took 5.5 s here, one with these two 3.0 s.
export HOME=$work/home GIMP2_DIRECTORY=$work/home/gimp
unset XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME
mkdir -p "$GIMP2_DIRECTORY/gradients" "$work/system-plug-ins"
for p in script-fu file-png; do ln -s "$system_plugins/$p" "$work/system-plug-ins/$p"; done
# No colour profile in exports: the grey trimap would carry the picture's RGB one.
cat > "$GIMP2_DIRECTORY/gimprc" <<EOF
(plug-in-path "$work/system-plug-ins:$our_plugins")
(export-color-profile no)
EOF

# Loads the picture with the trimap as a layer above it, mattes it with the
# given options, applies the mask and exports the layer as RGBA.
matte_and_export() {
  echo "
(let* ((image (car (gimp-file-load RUN-NONINTERACTIVE \"$work/sample/picture.png\" \"p.png\")))
       (layer (car (gimp-image-get-active-layer image)))
       (trimap (car (gimp-file-load-layer RUN-NONINTERACTIVE image \"$work/sample/trimap.png\"))))
  (gimp-image-insert-layer image trimap 0 0)
  (plug-in-keepcut-matte RUN-NONINTERACTIVE image layer trimap $1 $2)
  (gimp-layer-remove-mask layer MASK-APPLY)
  (file-png-save2 RUN-NONINTERACTIVE image layer \"$3\" \"c.png\" 0 9 0 0 0 0 0 0 1)
  (gimp-image-delete image))"
}
trimap_from_selection="
(let* ((image (car (gimp-file-load RUN-NONINTERACTIVE \"$work/sample/picture.png\" \"p.png\")))
       (layer (car (gimp-image-get-active-layer image))))
  (gimp-image-select-rectangle image CHANNEL-OP-REPLACE 16 12 128 96)
  (let ((channel (car (plug-in-keepcut-trimap-from-selection RUN-NONINTERACTIVE image layer 0))))
    (file-png-save2 RUN-NONINTERACTIVE image channel \"$work/gimp_trimap.png\" \"t.png\"
                    0 9 0 0 0 0 0 0 0))
  (gimp-image-delete image))"

status=0
timeout 240 "$gimp" -i -d -f -b "$trimap_from_selection" \
  -b "$(matte_and_export FALSE TRUE "$work/gimp_cutout.png")" \
  -b "$(matte_and_export TRUE FALSE "$work/gimp_hires.png")" \
  -b '(gimp-quit 0)' > "$work/gimp.log" 2>&1 || status=$?
mattes=$(grep -c "keepcut: matte of 160x120 layer written to its mask" "$work/gimp.log" || true)
if [ $status -ne 0 ] || [ "$mattes" != 2 ] ||
   ! grep -q "keepcut: trimap of 160x120 layer" "$work/gimp.log"; then
  echo "the headless GIMP run failed (status $status):"
  cat "$work/gimp.log"
  exit 1
fi
"$compare" trimap "$work/gimp_trimap.png" "$work/tool_map.png"
"$compare" matte "$work/gimp_cutout.png" "$work/tool_alpha.png" "$work/tool_foreground.png"
"$compare" matte "$work/gimp_hires.png" "$work/tool_alpha_hires.png" "$work/sample/picture.png"
