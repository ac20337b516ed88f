#!/usr/bin/env bash
# One command from a fresh Debian machine to a passing test suite: installs what is missing,
# configures, builds and runs the tests. Pass a preset name (default, asan, tsan) to pick a build.
# Standard output carries the tests' results; installation and build progress go to standard
# error.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"

tools/install-deps.sh
cmake --preset "$preset" >&2
cmake --build --preset "$preset" >&2
ctest --preset "$preset"
