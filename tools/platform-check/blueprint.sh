#!/usr/bin/env bash
# The build files as Soong reads them: bpfmt's formatting, and every module they name
# (libraries, headers, defaults, licences) defined in the tree or in the project itself.
set -uo pipefail
root="$1"
work="$2"
. "$(dirname "$0")/common.sh"

require bpfmt blueprint-tools || exit 1
mapfile -t files < <(git ls-files '*Android.bp')

for f in "${files[@]}"; do
    bpfmt -d "$f" >"$work/bpfmt.log" 2>&1 || true
    [ -s "$work/bpfmt.log" ] && fail "$f" "not as bpfmt formats it: $(cat "$work/bpfmt.log")"
done

# The modules of the tree: the slice's index, or a built tree's module-info.json.
index="$root/out/soong/module-index.tsv"
info="$root/out/soong/module-info.json"
known="$work/modules"
if [ -f "$index" ]; then
    cut -f1 "$index" >"$known"
elif [ -f "$info" ]; then
    grep -o '^  "[^"]*": {' "$info" | sed 's/^  "\(.*\)": {/\1/' >"$known"
else
    echo "blueprint: neither $index nor $info; module names not checked (build the tree first)"
    exit "$status"
fi

# The project's own modules, and the NDK libraries of its frozen interface versions.
for f in "${files[@]}"; do
    sed -n 's/^    name: "\(.*\)",$/\1/p' "$f"
done >>"$known"
for v in $(find interface/aidl_api/*/ -mindepth 1 -maxdepth 1 -regex '.*/[0-9]+' -printf '%f\n'); do
    echo "vendor.zarel.hardware.cwb-V$v-ndk"
done >>"$known"
sort -u -o "$known" "$known"

# Every quoted name inside a list property that names modules.
for f in "${files[@]}"; do
    awk '
        /^ *(shared_libs|static_libs|whole_static_libs|header_libs|runtime_libs|defaults|default_applicable_licenses|licenses): *\[/ { inlist = 1 }
        inlist { while (match($0, /"[^"]*"/)) { print substr($0, RSTART + 1, RLENGTH - 2); $0 = substr($0, RSTART + RLENGTH) } }
        inlist && /\]/ { inlist = 0 }
    ' "$f" | sort -u | while read -r name; do
        grep -qxF "$name" "$known" || echo "$name"
    done >"$work/missing"
    while read -r name; do
        fail "$f" "names module $name, which the tree does not define"
    done <"$work/missing"
done

exit "$status"
