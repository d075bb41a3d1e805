#!/usr/bin/env bash
# Installs the Debian packages keepcut builds, tests and benchmarks with; only
# missing ones are installed, so running it again is cheap. With the argument
# `fuzz` it also installs what `make fuzz` needs.
set -euo pipefail

packages=(
  g++ make cmake pkg-config binutils
  libopencv-dev            # core, imgproc; imgcodecs for the tool and tests
  libsuitesparse-dev       # CHOLMOD direct solver
  libopenblas-dev          # fast BLAS for CHOLMOD's supernodal kernels
  libeigen3-dev            # conjugate gradients, small dense algebra
  libcli11-dev             # the command-line tool's arguments
  nlohmann-json3-dev       # the tool's session scripts
  libgtest-dev libgmock-dev
  libbenchmark-dev
  python3-numpy python3-pytest  # the Python binding's tests (ctest python_binding)
  gimp libgimp2.0-dev      # the GIMP plug-in and its test (about 270 MB installed)
)
if [ "${1:-}" = fuzz ]; then
  packages+=(clang libclang-rt-14-dev)  # libFuzzer and the sanitizer runtimes
fi

missing=()
for p in "${packages[@]}"; do
  # A package counts as present only when dpkg says it is fully installed.
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "install-deps: installing ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then sudo=""; else sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# A fresh machine may have empty package lists: update once only if needed.
if ! $sudo apt-get install -y --no-install-recommends "${missing[@]}"; then
  $sudo apt-get update
  $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi
