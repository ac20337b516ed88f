#!/usr/bin/env bash
# One command from a fresh Debian machine to a simulator run: installs what is missing, builds
# cwb-sim and plays the built-in session (or the session and options given as arguments, with
# paths relative to where you run it).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

"$root/tools/install-deps.sh"
(cd "$root" && cmake --preset default >/dev/null && cmake --build --preset default --target cwb-sim >/dev/null)
exec "$root/build/default/cwb-sim" "$@"
