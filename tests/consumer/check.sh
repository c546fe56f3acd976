#!/usr/bin/env bash
# Installs the build tree into a scratch prefix, then builds and runs a small
# consumer with find_package(kfpgen) and with pkg-config.
set -euo pipefail
build=$1
work=$2
src=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
"${CMAKE:-cmake}" --install "$build" --prefix "$prefix" >/dev/null

"${CMAKE:-cmake}" -S "$src" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"${CMAKE:-cmake}" --build "$work/cmake-build" >/dev/null
LD_LIBRARY_PATH=$prefix/lib "$work/cmake-build/consumer"

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
cc -o "$work/pc-consumer" "$src/main.c" $(pkg-config --cflags --libs kfpgen)
LD_LIBRARY_PATH=$prefix/lib "$work/pc-consumer"
echo "consumer built with find_package and with pkg-config"
