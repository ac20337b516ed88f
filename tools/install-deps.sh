#!/usr/bin/env bash
# Installs the Debian packages the host build needs, and any named as arguments, only those that
# are missing.
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
echo "Installing: ${missing[*]}"
$sudo apt-get update -q
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
