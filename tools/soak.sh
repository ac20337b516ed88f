#!/usr/bin/env bash
# The soak under ThreadSanitizer and under AddressSanitizer + UndefinedBehaviorSanitizer, each for
# a bounded time (CWB_SOAK_SECONDS, default 60). Prints requests per second and the growth after
# warm-up of resident memory, descriptors, threads and mappings; a sanitizer report, a wrong
# answer, a stall, memory growth or a descriptor, thread or mapping left behind fails it.
# Usage: tools/soak.sh [PRESET...]   (default: tsan asan)
set -euo pipefail
cd "$(dirname "$0")/.."
export CWB_SOAK_SECONDS="${CWB_SOAK_SECONDS:-60}"
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(tsan asan)

for preset in "${presets[@]}"; do
    echo "== soak under ${preset} for ${CWB_SOAK_SECONDS} s"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target cwb_soak
    log="build/${preset}/soak.log"
    status=0
    ctest --preset "$preset" -L soak --output-on-failure \
        --timeout $((${CWB_SOAK_SECONDS%.*} + 300)) -V >"$log" 2>&1 || status=$?
    grep -E 'soak: ' "$log" || true
    if [ "$status" -ne 0 ]; then
        tail -n 60 "$log"
        echo "soak failed under ${preset} (full output in ${log})"
        exit "$status"
    fi
done
