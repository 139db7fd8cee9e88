#!/usr/bin/env bash
# Builds the fuzz preset and runs each fuzzer (archive, geometry, clearance, hull) on its seed
# corpus and its regressions, for the given time each.
#
#   fuzz/run.sh [seconds]      default 60 per fuzzer
#
# New inputs go to a temporary directory, never into the repository. A finding (crash,
# sanitizer report, leak, timeout, out-of-memory, an exception other than gkException) fails
# the run; its reproducer is copied to build/fuzz/findings/<fuzzer>/ (add it to
# fuzz/regressions/<fuzzer>/ once fixed).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

cmake --preset fuzz
cmake --build --preset fuzz

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# fuzz_one <fuzzer> [libFuzzer options...]: the fuzzer on corpus/<fuzzer> and
# regressions/<fuzzer>; returns non-zero on a finding.
fuzz_one() {
  local name="$1"
  shift
  mkdir -p "$work/$name/corpus" "$work/$name/artifacts"
  local status=0
  "./build/fuzz/fuzz/gkgeom_${name}_fuzz" "$work/$name/corpus" "fuzz/corpus/$name" \
    "fuzz/regressions/$name" -max_total_time="$seconds" -rss_limit_mb=2048 \
    -artifact_prefix="$work/$name/artifacts/" -print_final_stats=1 "$@" || status=$?
  if [[ $status -ne 0 ]] || [[ -n "$(ls -A "$work/$name/artifacts")" ]]; then
    mkdir -p "build/fuzz/findings/$name"
    cp -a "$work/$name/artifacts/." "build/fuzz/findings/$name/" 2>/dev/null || true
    echo "fuzz: $name finding (exit status $status); reproducers in build/fuzz/findings/$name/:" >&2
    ls -l "build/fuzz/findings/$name" >&2 || true
    return 1
  fi
  echo "fuzz: $name, no finding in ${seconds}s"
}

failed=0
fuzz_one archive -dict=fuzz/archive.dict -timeout=5 || failed=1
# One geometry input runs every operation on shapes of up to 40 vertices (a few ms, at most
# about a second under the sanitizers): 10 s means a hang. Inputs up to 2 kB hold the largest
# scenes; -len_control=0 lets them grow that long from the start.
fuzz_one geometry -timeout=10 -max_len=2048 -len_control=0 || failed=1
# A clearance input is at most 64 vertices of 5 bytes, checked against every pair of segments.
fuzz_one clearance -timeout=10 -max_len=330 || failed=1
# A hull input is seven-byte records; eight ring records already reach the 4000-point cap, so
# 512 bytes (73 records) leave room for every mix. Two hulls of 4000 points take at most a few
# tens of milliseconds under the sanitizers, even when every turn needs the exact integer sum:
# 10 s means a hang.
fuzz_one hull -timeout=10 -max_len=512 || failed=1
exit "$failed"
