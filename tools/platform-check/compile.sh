#!/usr/bin/env bash
# Every translation unit of the library, the cwb tool, the interface test and the binder fuzzer,
# compiled for AArch64 with clang against the tree's headers and the code the aidl stage
# generated, with the include folders the real modules export, the vendor defines and the
# module's own cflags. Debian's AArch64 libc headers and clang's libc++ stand in for bionic.
# The library is compiled once per vendor display-config version its build file can select.
set -uo pipefail
root="$1"
work="$2"
. "$(dirname "$0")/common.sh"

require clang++ clang || exit 1
cross_libc=/usr/aarch64-linux-gnu/include
libcxx=/usr/lib/llvm-14/include/c++/v1
[ -d "$cross_libc" ] || fail "$cross_libc" "missing (Debian package libc6-dev-arm64-cross)"
[ -d "$libcxx" ] || fail "$libcxx" "missing (Debian package libc++-14-dev)"
[ "$status" = 0 ] || exit 1

# gtest for the interface test: only its own folder, never the host's whole /usr/include. On
# __ANDROID__ it asks bionic for the API level, which glibc lacks: a vendor module of this tree
# builds for the current API.
mkdir -p "$work/gtest-include/android"
ln -sfn /usr/include/gtest "$work/gtest-include/gtest"
printf '#pragma once\n#define __ANDROID_API_FUTURE__ 10000\n#define __ANDROID_API__ __ANDROID_API_FUTURE__\n' \
    >"$work/gtest-include/android/api-level.h"

gen="$work/gen"
resource="$(clang++ -print-resource-dir)"
system=(-nostdinc -isystem "$libcxx" -isystem "$root/bionic/libc/include"
        -isystem "$resource/include" -isystem "$cross_libc" -isystem "$work/gtest-include")
# What the modules the project links export, in the vendor variants.
platform=(
    frameworks/native/libs/binder/ndk/include_ndk
    frameworks/native/libs/binder/ndk/include_platform
    frameworks/native/libs/binder/ndk/include_cpp
    frameworks/native/libs/binder/include
    frameworks/native/libs/binder/tests/parcel_fuzzer/include_random_parcel
    frameworks/native/libs/ui/include
    frameworks/native/libs/arect/include
    frameworks/native/libs/math/include
    frameworks/native/libs/nativebase/include
    frameworks/native/libs/nativewindow/include
    system/core/libutils/include
    system/core/libcutils/include_outside_system
    system/core/libsystem/include
    system/logging/liblog/include_vndk
    system/libbase/include
    hardware/libhardware/include_all
    hardware/interfaces/common/support/include
    out/soong/hidl-enums
    vendor/qcom/opensource/commonsys-intf/display/services
    vendor/qcom/opensource/display/libqservice
)
includes=()
for dir in "${platform[@]}"; do includes+=(-I "$root/$dir"); done
for pkg in vendor.zarel.hardware.cwb-V2 android.hardware.common-V2 \
        android.hardware.graphics.common-V5; do
    includes+=(-I "$gen/$pkg/include")
done
# Soong's own for a vendor module, then -Wall -Wextra -Werror over everything.
common=(--target=aarch64-linux-gnu -std=gnu++17 -fsyntax-only -D__ANDROID__
        -D__ANDROID_VENDOR__ -D__ANDROID_VNDK__ -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS
        -Wall -Wextra -Werror)

# bp_list FILE PROPERTY: the quoted entries of every list PROPERTY in FILE.
bp_list() {
    awk -v prop="$2" '
        $0 ~ "^ *" prop ": *\\[" { inlist = 1 }
        inlist { while (match($0, /"[^"]*"/)) { print substr($0, RSTART + 1, RLENGTH - 2); $0 = substr($0, RSTART + RLENGTH) } }
        inlist && /\]/ { inlist = 0 }
    ' "$1"
}

# compile BUILD_FILE WHAT [EXTRA_FLAG...]: every source its modules list, with their cflags, one
# clang per core; each result is left in WORK/cc/<n>.{src,what,log,rc} for report().
jobs=0
compile() {
    local bp="$1" what="$2" dir
    shift 2
    dir="$(dirname "$bp")"
    mapfile -t cflags < <(bp_list "$bp" cflags)
    for src in $(bp_list "$bp" srcs); do
        while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
        jobs=$((jobs + 1))
        echo "$dir/$src" >"$work/cc/$jobs.src"
        echo "$what" >"$work/cc/$jobs.what"
        (
            clang++ "${common[@]}" "${cflags[@]}" "$@" "${system[@]}" -I "$dir" \
                "${includes[@]}" "$dir/$src" >"$work/cc/$jobs.log" 2>&1
            echo $? >"$work/cc/$jobs.rc"
        ) &
    done
}

# The failures in the order the sources were listed.
report() {
    wait
    for ((n = 1; n <= jobs; n++)); do
        [ "$(cat "$work/cc/$n.rc")" = 0 ] && continue
        what="$(cat "$work/cc/$n.what")"
        fail "$(cat "$work/cc/$n.src")" "does not compile${what:+ ($what)}:"
        sed 's/^/    /' "$work/cc/$n.log" | head -n 40
    done
}

mkdir -p "$work/cc"
for v in $(display_config_versions); do
    compile multimedia/display/cwb/aidl/qcom/Android.bp "display-config V$v" \
        -I "$gen/vendor.qti.hardware.display.config-V$v/include"
done
compile multimedia/display/cwb/tool/Android.bp ""
compile interface/vts/Android.bp ""
report

exit "$status"
