#!/usr/bin/env bash
# Compiles the vendor policy in sepolicy/ against an Android tree as the platform build does:
#   1. the vendor part against the public platform policy alone (checkpolicy -C): vendor policy
#      may name no private platform type;
#   2. the monolithic policy with every neverallow, for user and userdebug;
#   3. every context file against the compiled policy and the type-attribute rules.
# Usage: tools/platform-check/policy.sh ROOT
# The chip vendor's policy comes from CHIP_SEPOLICY_DIRS (folders under ROOT) if set, else the
# excerpt of the slice, else the chip vendor's generic/vendor/common folders of a full tree.
# BOARD_SEPOLICY_M4DEFS (name=value ...) is passed to m4 as a board's BoardConfig does.
set -euo pipefail
export LC_ALL=C PATH="$PATH:/usr/sbin:/sbin"

root=$(cd "${1:?usage: $0 ROOT}" && pwd)
cd "$(dirname "$0")/../.."
project=sepolicy
sepolicy=$root/system/sepolicy
failed=0

fail() {
    echo "$1: $2"
    failed=1
}

# Prints each line of a tool's output prefixed with what was checked.
report() {
    local what=$1 log=$2
    sed "/^[[:space:]]*$/d; s|$tmp/checks/checks.te|the check's own neverallows|g; s|$tmp/||g; s|^|$what: |" "$log"
    failed=1
}

missing=()
for tool in m4 checkpolicy sefcontext_compile seinfo; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
if ((${#missing[@]})); then
    echo "policy: missing ${missing[*]} (Debian: apt-get install m4 checkpolicy selinux-utils setools)"
    exit 1
fi
if [[ ! -d $sepolicy/public ]]; then
    echo "policy: no platform policy under $sepolicy"
    exit 1
fi

vndr=$root/device/qcom/sepolicy_vndr/generic/vendor
if [[ -n ${CHIP_SEPOLICY_DIRS:-} ]]; then
    read -ra chip <<<"$CHIP_SEPOLICY_DIRS"
    chip=("${chip[@]/#/$root/}")
elif [[ -d $vndr/common-excerpt ]]; then
    chip=("$vndr/common-excerpt")
elif [[ -d $vndr/common ]]; then
    chip=("$vndr/common")
    [[ -d $vndr/common/attribute ]] && chip+=("$vndr/common/attribute")
else
    echo "policy: no chip-vendor policy under $vndr (set CHIP_SEPOLICY_DIRS)"
    exit 1
fi
echo "policy: chip vendor ${chip[*]#"$root/"}"

m4defs=(-D mls_num_sens=1 -D mls_num_cats=1024 -D target_arch=arm64 -D target_full_treble=true
    -D target_compatible_property=true -D target_treble_sysprop_neverallow=true
    -D target_enforce_sysprop_owner=true -D target_exclude_build_test=false
    -D target_with_asan=false -D target_with_dexpreopt=true -D target_with_native_coverage=false
    -D target_requires_insecure_execmem_for_swiftshader=false
    -D target_enforce_debugfs_restriction=true -D target_recovery=false
    -D target_board_api_level=1000000)
board=()
for def in ${BOARD_SEPOLICY_M4DEFS:-}; do board+=(-D "$def"); done

# The policy files of every folder, one kind after another, in the order the build reads them.
kinds=(security_classes initial_sids access_vectors global_macros neverallow_macros mls_macros
    mls_decl mls policy_capabilities te_macros ioctl_defines ioctl_macros attributes '*.te'
    roles_decl roles users initial_sid_contexts fs_use genfs_contexts port_contexts)

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# The project's own rules, checked here and not shipped: a device's composer may have grants of
# its own that the project has no say in. The composer maps its clients' memfds, never every
# process's (unlabelled tmpfs) or every app's.
mkdir "$tmp/checks"
cat >"$tmp/checks/checks.te" <<'EOF'
neverallow hal_graphics_composer_server { tmpfs appdomain_tmpfs }:file { read write map };
EOF

# compile NAME VARIANT CHECKPOLICY-FLAGS -- DIR...: m4 then checkpolicy into $tmp/NAME.
compile() {
    local name=$1 variant=$2 flags=$3 kind dir file
    shift 4
    local files=()
    [[ -f $sepolicy/flagging/te_macros ]] && files+=("$sepolicy/flagging/te_macros")
    for kind in "${kinds[@]}"; do
        for dir in "$@"; do
            for file in "$dir"/$kind; do
                [[ -f $file ]] && files+=("$file")
            done
        done
    done
    if ! m4 --fatal-warnings -s "${m4defs[@]}" -D target_build_variant="$variant" "${board[@]}" \
        "${files[@]}" >"$tmp/$name.conf" 2>"$tmp/log"; then
        report "$name policy (m4)" "$tmp/log"
        return 1
    fi
    # checkpolicy names the source file and line from m4's sync lines.
    # shellcheck disable=SC2086
    if ! checkpolicy $flags -M -c 30 -o "$tmp/$name" "$tmp/$name.conf" >"$tmp/log" 2>&1; then
        report "$name policy" "$tmp/log"
        return 1
    fi
}

compile vendor user -C -- "$sepolicy/public" "$sepolicy/reqd_mask" "$sepolicy/vendor" "${chip[@]}" \
    "$project" || true
monolithic=("$sepolicy/public" "$sepolicy/private" "$sepolicy/vendor" "${chip[@]}" "$project"
    "$tmp/checks")
user=0
compile user user "" -- "${monolithic[@]}" || user=1
compile userdebug userdebug "" -- "${monolithic[@]}" || true
# The context files are checked against the user build's policy.
if ((user != 0)); then
    echo "$project: context files not checked: the policy does not compile"
    exit 1
fi

# Context files: each context valid in the policy, each type carrying the attribute its file
# requires (checkfc's rules; genfs labels are filesystem types, sysfs ones sysfs_type).
members() { seinfo -x -a "$1" "$tmp/user" | awk 'NR > 1 { print $1 }'; }
declare -A attribute=([file_contexts]=file_type [service_contexts]=service_manager_type
    [vndservice_contexts]=vndservice_manager_type [hwservice_contexts]=hwservice_manager_type
    [property_contexts]=property_type [genfs_contexts]=fs_type)
for path in "$project"/*; do
    name=${path##*/}
    case $name in
        *.te | attributes) continue ;;
    esac
    if [[ -z ${attribute[$name]:-} ]]; then
        fail "$path" "not a policy file this check knows"
        continue
    fi
    if ! m4 --fatal-warnings -s "${board[@]}" "$path" >"$tmp/$name" 2>"$tmp/log"; then
        report "$path" "$tmp/log"
        continue
    fi
    if [[ $name != genfs_contexts ]]; then
        # sefcontext_compile validates every context against the policy; other context files are
        # given to it as file_contexts lines with their context.
        input=$tmp/$name
        if [[ $name != file_contexts ]]; then
            grep -o 'u:object_r:[^[:space:]]*' "$tmp/$name" | awk '{ print "/x" NR " " $0 }' \
                >"$tmp/$name.fc"
            input=$tmp/$name.fc
        fi
        sefcontext_compile -p "$tmp/user" -o "$tmp/$name.bin" "$input" >"$tmp/log" 2>&1 ||
            report "$path" "$tmp/log"
    fi
    members "${attribute[$name]}" >"$tmp/members"
    members sysfs_type >"$tmp/sysfs"
    while read -r line; do
        type=$(grep -o 'u:object_r:[A-Za-z0-9_]*' <<<"$line" | cut -d: -f3) || continue
        grep -qx "$type" "$tmp/members" ||
            fail "$path" "$type lacks the attribute ${attribute[$name]}: $line"
        if [[ $line == genfscon\ sysfs\ * ]] && ! grep -qx "$type" "$tmp/sysfs"; then
            fail "$path" "$type lacks the attribute sysfs_type: $line"
        fi
    done < <(grep -v '^[[:space:]]*#' "$tmp/$name")
done

exit "$failed"
