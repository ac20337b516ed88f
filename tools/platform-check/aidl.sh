#!/usr/bin/env bash
# The interface through the tree's AIDL compiler, as Soong's aidl_interface runs it: the NDK
# backend of every frozen version, the API checks between versions, the dump of the sources and
# every version's hash. The interfaces the product imports are generated the same way, into
# WORK/gen/<package>-V<version>/, for the compile stage.
set -uo pipefail
root="$1"
work="$2"
. "$(dirname "$0")/common.sh"

if [ ! -x "$aidl_bin" ]; then
    fail "$aidl_bin" "missing (in a full tree: m aidl)"
    exit 1
fi

# The hash Soong writes into aidl_api/PKG/N/.hash.
api_hash() {
    local dir="$1" version="$2" tag
    if [ "$version" = 1 ]; then tag=latest-version; else tag=$((version - 1)); fi
    (cd "$dir" && { find ./ -name "*.aidl" -print0 | LC_ALL=C sort -z | xargs -0 sha1sum &&
        echo "$tag"; } | sha1sum | cut -d' ' -f1)
}

# generate API_ROOT PACKAGE VERSION [IMPORT_DIR...]: the NDK backend of one frozen version.
generate() {
    local api="$1/aidl_api/$2/$3" package="$2" version="$3" out="$work/gen/$2-V$3"
    shift 3
    local imports=()
    for dir in "$@"; do imports+=(-I "$dir"); done
    if [ ! -f "$api/.hash" ]; then
        fail "$api" "frozen version $version not in the tree"
        return
    fi
    local hash
    hash="$(tail -n 1 "$api/.hash")"
    mkdir -p "$out/include" "$out/src"
    while IFS= read -r -d '' file; do
        if ! "$aidl_bin" --lang=ndk --structured --stability vintf --min_sdk_version current \
                --version "$version" --hash "$hash" -I "$api" "${imports[@]}" \
                -h "$out/include" -o "$out/src" "$file" >"$work/aidl.log" 2>&1; then
            fail "${file#"$root"/}" "$(cat "$work/aidl.log")"
        fi
    done < <(find "$api" -name '*.aidl' -print0 | LC_ALL=C sort -z)
}

# Our own package: hashes, API checks, the dump of the sources, and the generated code.
pkg=vendor.zarel.hardware.cwb
api_root="interface/aidl_api/$pkg"
versions=()
while IFS= read -r v; do versions+=("$v"); done < <(
    find "$api_root" -mindepth 1 -maxdepth 1 -type d -regex '.*/[0-9]+' -printf '%f\n' | sort -n)

for v in "${versions[@]}"; do
    want="$(tail -n 1 "$api_root/$v/.hash")"
    got="$(api_hash "$api_root/$v" "$v")"
    [ "$want" = "$got" ] || fail "$api_root/$v/.hash" "is $want, the build computes $got"
    generate interface "$pkg" "$v"
done

previous=""
for v in "${versions[@]}" current; do
    if [ -n "$previous" ]; then
        "$aidl_bin" --checkapi=compatible --stability vintf "$api_root/$previous" "$api_root/$v" \
                >"$work/aidl.log" 2>&1 ||
            fail "$api_root/$v" "not a compatible extension of $previous: $(cat "$work/aidl.log")"
    fi
    previous="$v"
done
last="${versions[${#versions[@]} - 1]}"
"$aidl_bin" --checkapi=equal --stability vintf "$api_root/$last" "$api_root/current" \
        >"$work/aidl.log" 2>&1 ||
    fail "$api_root/current" "differs from frozen version $last: $(cat "$work/aidl.log")"

mkdir -p "$work/dump"
mapfile -t sources < <(find interface/vendor -name '*.aidl' | LC_ALL=C sort)
if "$aidl_bin" --dumpapi --structured --stability vintf -I interface -o "$work/dump" "${sources[@]}" \
        >"$work/aidl.log" 2>&1; then
    diff -r "$work/dump" "$api_root/current" >"$work/diff.log" ||
        fail "$api_root/current" "is not the dump of interface/vendor: $(cat "$work/diff.log")"
else
    fail interface/vendor "$(cat "$work/aidl.log")"
fi

# The generated code checked in under host/aidl/ is exactly what the tree's compiler makes.
if host/aidl/generate.sh "$root" "$work/checked-in" >"$work/aidl.log" 2>&1; then
    diff -r "$work/checked-in" host/aidl -x generate.sh -x .clang-format >"$work/diff.log" ||
        fail host/aidl "differs from what host/aidl/generate.sh makes: $(cat "$work/diff.log")"
else
    fail host/aidl/generate.sh "$(cat "$work/aidl.log")"
fi

# The interfaces the product imports, each version it may build against.
common="$common_aidl/aidl_api/android.hardware.common/2"
generate "$common_aidl" android.hardware.common 2
generate "$graphics_common_aidl" android.hardware.graphics.common 5 "$common"
for v in $(display_config_versions); do
    generate "$display_config_aidl" vendor.qti.hardware.display.config "$v" "$common"
done

exit "$status"
