#!/usr/bin/env bash
# Builds the consumer with nothing but a compiler and pkg-config, and runs it.
#   pkgconfig.sh LIBDIR CONSUMER OUT COMPILER [FLAGS...]
set -euo pipefail
libdir=$1 consumer=$2 out=$3 compiler=$4
flags=("${@:5}")
export PKG_CONFIG_PATH=$libdir/pkgconfig

for host in kinematics toolkit; do
  package=$([[ $host == toolkit ]] && echo KorvoToolkit || echo Korvo_Kinematics)
  # shellcheck disable=SC2046  # the answer of pkg-config is a list of flags
  "$compiler" -std=c++20 "${flags[@]}" "$consumer/$host.cpp" -o "$out/pkgconfig_$host" \
    $(pkg-config --cflags --libs "$package") "-Wl,-rpath,$libdir"
  "$out/pkgconfig_$host" "$(pkg-config --variable=machines Korvo_Kinematics)"
done
