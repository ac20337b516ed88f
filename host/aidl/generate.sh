#!/usr/bin/env bash
# Regenerates the NDK backend of vendor.zarel.hardware.cwb (the frozen version the library
# builds against) with the tree's AIDL compiler and the flags Soong's aidl_interface passes.
# Usage: host/aidl/generate.sh AOSP_ROOT [OUT_DIR]   (OUT_DIR defaults to host/aidl)
set -euo pipefail
root="$1"
repo="$(cd "$(dirname "$0")/../.." && pwd)"
out="${2:-$repo/host/aidl}"
version=2
api="interface/aidl_api/vendor.zarel.hardware.cwb/$version"
cd "$repo"
hash="$(tail -n 1 "$api/.hash")"
rm -rf "$out/include" "$out/src"
mkdir -p "$out/include" "$out/src"
find "$api" -name '*.aidl' -print0 | LC_ALL=C sort -z |
    while IFS= read -r -d '' file; do
        "$root/out/host/linux-x86/bin/aidl" --lang=ndk --structured --stability vintf \
            --min_sdk_version current --version "$version" --hash "$hash" -I "$api" \
            -h "$out/include" -o "$out/src" "$file"
    done
# The banner names the output folder; make it the same wherever the code is generated.
find "$out/include" "$out/src" -type f -print0 |
    xargs -0 sed -i -e "s| -h [^ ]*/include -o [^ ]*/src | -h host/aidl/include -o host/aidl/src |"
find "$out/include" "$out/src" -type f -print0 |
    xargs -0 sed -i -e "s|Using: [^ ]*/out/host/linux-x86/bin/aidl |Using: out/host/linux-x86/bin/aidl |"
