#!/usr/bin/env bash
# Builds the fuzz preset and runs the archive fuzzer on the seed corpus and the regressions.
#
#   fuzz/run.sh [seconds]      default 60
#
# New inputs go to a temporary directory, never into the repository. A finding (crash,
# sanitizer report, leak, timeout, out-of-memory, an exception other than gkException) fails
# the run; its reproducer is copied to build/fuzz/findings/ (add it to fuzz/regressions/ once
# fixed).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

cmake --preset fuzz
cmake --build --preset fuzz

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/artifacts"

status=0
./build/fuzz/fuzz/gkgeom_archive_fuzz "$work/corpus" fuzz/corpus/archive fuzz/regressions \
  -dict=fuzz/archive.dict -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 \
  -artifact_prefix="$work/artifacts/" -print_final_stats=1 || status=$?

if [[ $status -ne 0 ]] || [[ -n "$(ls -A "$work/artifacts")" ]]; then
  mkdir -p build/fuzz/findings
  cp -a "$work/artifacts/." build/fuzz/findings/ 2>/dev/null || true
  echo "fuzz: finding (exit status $status); reproducers in build/fuzz/findings/:" >&2
  ls -l build/fuzz/findings >&2 || true
  exit 1
fi
echo "fuzz: no finding in ${seconds}s"
