#!/usr/bin/env bash
# One command from a fresh Debian machine to a simulator run: installs what is missing, builds
# cwb-sim and plays the built-in session (or the session and options given as arguments, with
# paths relative to where you run it). Standard output is the simulator's alone: installation
# progress goes to standard error, and the build's output only when it fails.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

"$root/tools/install-deps.sh"
log="$(mktemp)"
if ! (cd "$root" && cmake --preset default && cmake --build --preset default --target cwb-sim) \
    >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    exit 1
fi
rm -f "$log"
exec "$root/build/default/cwb-sim" "$@"
