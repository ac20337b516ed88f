#!/usr/bin/env bash
# Installs the Debian packages the host build needs, and any named as arguments, only those that
# are missing. Progress goes to standard error, one line per step, so that the callers' standard
# output stays theirs; apt's own output is shown only when a step fails.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    clang clang-format libc++-14-dev libc++abi-14-dev libclang-rt-14-dev
    libgtest-dev libgmock-dev libbenchmark-dev libpng-dev
)
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
log="$(mktemp)"
trap 'rm -f "$log"' EXIT
step() {
    echo "install-deps: $1" >&2
    shift
    if ! "$@" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        echo "install-deps: failed: $*" >&2
        exit 1
    fi
}
step "updating the package lists" $sudo apt-get update -q
step "installing ${missing[*]}" \
    env DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends \
    "${missing[@]}"
echo "install-deps: done" >&2
