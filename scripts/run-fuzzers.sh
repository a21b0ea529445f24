#!/usr/bin/env bash
# Runs every libFuzzer harness of a fuzzing build for a number of seconds each, on the seed
# corpus of the repository (fuzz/corpus/NAME) and a working corpus in the build folder, and
# prints executions and coverage per harness. Exits non-zero on the first finding; the input
# that found it is kept under BUILD/fuzz-artifacts/.
#
#   scripts/run-fuzzers.sh BUILD SECONDS
set -euo pipefail

build=$1
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
declare -A corpus=([fuzz_message_rw]=message [fuzz_project]=project
                   [fuzz_gltf_text]=gltf_text [fuzz_gltf_binary]=gltf_binary
                   [fuzz_preset_text]=preset_text)

mkdir -p "$build/fuzz-artifacts"
summary=()
for harness in fuzz_message_rw fuzz_project fuzz_gltf_text fuzz_gltf_binary fuzz_preset_text; do
    seeds="$root/fuzz/corpus/${corpus[$harness]}"
    work="$build/fuzz-corpus/${corpus[$harness]}"
    log="$build/fuzz-artifacts/$harness.log"
    mkdir -p "$work"
    echo "fuzz: $harness for ${seconds} s"
    if ! "$build/bin/$harness" -max_total_time="$seconds" -dict="$root/fuzz/oxlin.dict" \
        -max_len=65536 -timeout=30 -rss_limit_mb=4096 -print_final_stats=1 \
        -artifact_prefix="$build/fuzz-artifacts/$harness-" "$work" "$seeds" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "fuzz: $harness found a problem; the input is in $build/fuzz-artifacts/" >&2
        exit 1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2)
    summary+=("$(printf '%-18s %10s executions  coverage %s' "$harness" "${runs:-?}" "${cov:-?}")")
done
printf 'fuzz: %s\n' "${summary[@]}"
