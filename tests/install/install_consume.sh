#!/usr/bin/env bash
# Installs the engine into a staging folder and builds two hosts against that
# copy only: one through the CMake package, one through pkg-config (C99). Both
# run, once more with another OpenCV loaded into the process first. Also
# checks the SONAME, the exported names and that no OpenCV or CHOLMOD symbol
# is imported.
set -euo pipefail
build=$1 src=$2 work=$3
stage=$work/stage
rm -rf "$work" && mkdir -p "$work"
cmake --install "$build" --prefix "$stage" > "$work/install.log"

lib=$(find "$stage" -name 'libkeepcut.so.0' | head -1)
[ -n "$lib" ] || { echo "libkeepcut.so.0 was not installed"; exit 1; }
libdir=$(dirname "$lib")
soname=$(readelf -d "$lib" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libkeepcut.so.0 ] || { echo "SONAME is '$soname'"; exit 1; }
for h in keepcut.h keepcut_export.h; do
  [ -f "$stage/include/keepcut/$h" ] || { echo "include/keepcut/$h missing"; exit 1; }
done
"$src/tests/api/check_exports.sh" "$lib" "$src/src/api/keepcut.map"
# A GIMP plug-in built here is installed in GIMP's layout and finds the
# installed library by itself.
if [ -x "$build/plugins/gimp/plug-ins/keepcut/keepcut" ]; then
  plugin=$libdir/gimp/2.0/plug-ins/keepcut/keepcut
  [ -x "$plugin" ] || { echo "the GIMP plug-in was not installed as $plugin"; exit 1; }
  found=$(env -u LD_LIBRARY_PATH ldd "$plugin" | sed -n 's/.*libkeepcut\.so\.0 => \(.*\) (.*/\1/p')
  [ "$(realpath "$found")" = "$(realpath "$lib")" ] ||
    { echo "the installed GIMP plug-in loads libkeepcut.so.0 from '$found'"; exit 1; }
fi
imports=$(nm -D --undefined-only "$lib" | awk '{print $2}' | grep -E '^_ZN2cv|^cholmod_|^cv[A-Z]' || true)
[ -z "$imports" ] || { echo "imports a dependency's C++ or solver symbols:"; echo "$imports"; exit 1; }

cmake -S "$src/tests/install/consumer" -B "$work/cmake-host" -DCMAKE_PREFIX_PATH="$stage" \
  -DCMAKE_BUILD_TYPE=Release > "$work/cmake-host.log" 2>&1 || { cat "$work/cmake-host.log"; exit 1; }
cmake --build "$work/cmake-host" > "$work/cmake-host-build.log" 2>&1 ||
  { cat "$work/cmake-host-build.log"; exit 1; }

export PKG_CONFIG_PATH=$libdir/pkgconfig
cc -std=c99 -pedantic -Wall -Werror "$src/tests/install/consumer/consumer.c" \
  $(pkg-config --cflags --libs keepcut) -o "$work/pc-host"

cc -shared -fPIC "$src/tests/install/other_opencv.c" -o "$work/libother_opencv.so"

export LD_LIBRARY_PATH=$libdir
"$work/cmake-host/consumer"
"$work/pc-host"
LD_PRELOAD=$work/libother_opencv.so "$work/pc-host"
echo "install and consume: ok ($(du -sh "$stage" | cut -f1) installed)"
