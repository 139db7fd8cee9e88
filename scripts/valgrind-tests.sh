#!/usr/bin/env bash
# Runs every test executable of a build under Valgrind memcheck; any memcheck report (invalid
# read or write, use of uninitialised values, a definite or indirect leak, a bad free) fails.
#
#   scripts/valgrind-tests.sh [build-dir]      default build/release
#
# Meant for the release build: memcheck slows code down some 30-50 times (the whole release
# suite, about 2 s natively, takes about 80 s of CPU under memcheck, a little over a minute
# on two cores), and the debug build is several times slower again. Nothing is left out; the
# thread test runs too (memcheck serialises its threads, ThreadSanitizer covers races).
# Executables run JOBS at a time (default 2); each one's output and memcheck log are kept in
# <build-dir>/valgrind/. scripts/valgrind.supp holds the suppressions, all outside gkgeom.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/release}"
jobs="${JOBS:-2}"

if ! command -v valgrind >/dev/null 2>&1; then
  echo "valgrind-tests: valgrind is not installed (scripts/install-deps.sh valgrind)" >&2
  exit 2
fi
mapfile -t executables < <(find "$build/tests" -maxdepth 1 -type f -perm -u+x \
  \( -name 'gkgeom_*_tests' -o -name 'gkgeom_umbrella_check' \) | sort)
if [[ ${#executables[@]} -eq 0 ]]; then
  echo "valgrind-tests: no test executable under $build/tests; build it first" >&2
  exit 2
fi
logs="$build/valgrind"
rm -rf "$logs"
mkdir -p "$logs"

run_one() {
  local exe="$1" logs="$2"
  local name
  name=$(basename "$exe")
  local start=$SECONDS
  local args=()
  if [[ "$name" == *_tests ]]; then
    args=(--gtest_brief=1)
  fi
  if valgrind --tool=memcheck --error-exitcode=99 --leak-check=full \
      --suppressions=scripts/valgrind.supp \
      --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
      --log-file="$logs/$name.memcheck" "$exe" "${args[@]}" >"$logs/$name.out" 2>&1; then
    echo "valgrind: $name clean in $((SECONDS - start)) s"
  else
    local status=$?
    echo "valgrind: $name FAILED (exit status $status, $((SECONDS - start)) s); see $logs/$name.*" >&2
    return 1
  fi
}
export -f run_one

start=$SECONDS
status=0
printf '%s\n' "${executables[@]}" |
  xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {} "$logs" || status=$?
echo "valgrind: ${#executables[@]} executables in $((SECONDS - start)) s"
exit "$status"
