#!/usr/bin/env bash
# Fuzzes every target for a bounded time with libFuzzer (Clang, ASan + UBSan), starting from its
# committed corpus in fuzz/corpus/<target>/. A crash, a sanitizer report, a leak, a time-out or
# running out of memory fails the run and leaves the input that caused it in
# build/fuzz/artifacts/. FUZZ_SECONDS sets the time per target (default 20).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${FUZZ_SECONDS:-20}"

tools/install-deps.sh
cmake --preset fuzz
cmake --build --preset fuzz

out=build/fuzz
mkdir -p "$out/artifacts"
failed=()
for corpus in fuzz/corpus/*/; do
    target="$(basename "$corpus")"
    # New inputs go to a scratch folder; the committed corpus is only read.
    scratch="$out/corpus/$target"
    mkdir -p "$scratch"
    log="$out/$target.log"
    if "$out/$target" "$scratch" "$corpus" -max_total_time="$seconds" -timeout=10 \
            -rss_limit_mb=2048 -artifact_prefix="$out/artifacts/$target-" \
            -print_final_stats=1 >"$log" 2>&1; then
        runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
        rate="$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")"
        coverage="$(grep -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -1)"
        echo "$target: $runs runs, $rate exec/s, $coverage"
    else
        echo "$target: FAILED (log $log)"
        grep -E -A30 '==ERROR|runtime error|Test unit written' "$log" | head -60 || tail -40 "$log"
        failed+=("$target")
    fi
done

if [ "${#failed[@]}" -ne 0 ]; then
    echo "fuzzing failed: ${failed[*]}; inputs in $out/artifacts/"
    exit 1
fi
