#!/usr/bin/env bash
# Checks the project against an Android tree: the interface with the tree's AIDL compiler, the
# product's sources compiled for AArch64 against the tree's headers, the vendor policy with the
# tree's platform policy, and the build files against the tree's modules.
#
#   tools/platform-check.sh [ROOT]    ROOT, else $ANDROID_BUILD_TOP, else ../shared/aosp
#
# Prints what fails, file by file; exits non-zero on any failure. Without a tree it says so and
# exits 0, so a fresh machine without one still runs the README's commands.
set -uo pipefail
cd "$(dirname "$0")/.."

root="${1:-${ANDROID_BUILD_TOP:-../shared/aosp}}"
if [ ! -d "$root" ]; then
    echo "platform-check: no Android tree at $root; skipped (pass ROOT or set ANDROID_BUILD_TOP)"
    exit 0
fi
root="$(cd "$root" && pwd)"

work="$(mktemp -d "${TMPDIR:-/tmp}/platform-check.XXXXXX")"
trap 'rm -rf "$work"' EXIT

failed=()
for stage in aidl compile policy blueprint; do
    echo "== platform-check: $stage (tree $root)"
    if ! tools/platform-check/"$stage".sh "$root" "$work"; then
        failed+=("$stage")
    fi
done

if [ "${#failed[@]}" -ne 0 ]; then
    echo "platform-check: FAILED: ${failed[*]}"
    exit 1
fi
echo "platform-check: passed"
