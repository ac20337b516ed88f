#!/usr/bin/env bash
# Cross-builds the library, the host stand-ins, the simulated phone, cwb-sim and the test suite
# for AArch64 with Debian's cross toolchain (GoogleTest from its source package), then runs the
# suite under qemu-user. Installs what is missing first.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/install-deps.sh g++-aarch64-linux-gnu libc6-dev-arm64-cross qemu-user googletest
# qemu-user would write core files for each death test's deliberate abort. Children run by a
# binfmt handler, if the machine has one, find the target's libraries too.
ulimit -c 0
export QEMU_LD_PREFIX=/usr/aarch64-linux-gnu

start=$SECONDS
cmake --preset aarch64
cmake --build --preset aarch64 -j2
ctest --preset aarch64 -j2
echo "AArch64 build and tests under qemu-user: $((SECONDS - start)) s"
