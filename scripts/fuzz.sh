#!/bin/bash
# fuzz.sh BUILD SECONDS JOBS: runs every fuzzer of a build with its seeds. A finding fails the run
# and its input stays in BUILD/fuzz-findings.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
seconds=$2
jobs=$3
mkdir -p "$build/fuzz-findings" "$build/fuzz-corpus" "$build/fuzz-log"

one() {
  local name corpus
  name=$(basename "$1")
  corpus="$build/fuzz-corpus/$name"
  mkdir -p "$corpus"
  if ! "$1" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$build/fuzz-findings/$name-" "$corpus" "tests/fuzz/seeds/${name%_fuzz}" \
      > "$build/fuzz-log/$name" 2>&1; then
    tail -40 "$build/fuzz-log/$name"
    echo "$name: a finding"
    return 1
  fi
  echo "$name: $(grep -m1 number_of_executed_units "$build/fuzz-log/$name")"
}
export -f one
export build seconds

fuzzers=$(find "$build" -maxdepth 1 -type f -perm -u+x -name '*_fuzz' | sort)
[ -n "$fuzzers" ] || { echo "no fuzzer was built"; exit 1; }
printf '%s\n' "$fuzzers" | xargs -P "$jobs" -I{} bash -c 'one {}'
