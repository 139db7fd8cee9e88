#!/usr/bin/env bash
# Installs what gkgeom needs from Debian packages. Idempotent and non-interactive: when every
# package is present it does nothing (and does not touch the network).
#
#   scripts/install-deps.sh          the build and the tests
#   scripts/install-deps.sh bench    also the benchmark library and the peer libraries
set -euo pipefail

packages=(cmake make g++ pkgconf libgtest-dev libgmock-dev)
if [[ "${1:-}" == "bench" ]]; then
  packages+=(libbenchmark-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [[ ${#missing[@]} -eq 0 ]]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
