#!/usr/bin/env bash
# Installs what gkgeom needs from Debian packages. Idempotent and non-interactive: when every
# package is present it does nothing (and does not touch the network).
#
#   scripts/install-deps.sh          the build and the tests
#   scripts/install-deps.sh bench    also the benchmark library and the peer libraries
#   scripts/install-deps.sh fuzz     also clang and its runtime libraries (libFuzzer, the
#                                    sanitizers), for the fuzz preset
#   scripts/install-deps.sh valgrind also valgrind, for `make valgrind`
set -euo pipefail

packages=(cmake make g++ pkgconf libgtest-dev libgmock-dev libexpat1-dev libboost-dev
  nlohmann-json3-dev libcli11-dev)
if [[ "${1:-}" == "bench" ]]; then
  packages+=(libbenchmark-dev libopencv-dev libgeos-dev libpolyclipping-dev)
fi

installed() {
  dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"
}

sudo=""
if [[ $(id -u) -ne 0 ]]; then
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
updated=0

install_missing() {
  local missing=()
  local p
  for p in "$@"; do
    if ! installed "$p"; then
      missing+=("$p")
    fi
  done
  if [[ ${#missing[@]} -eq 0 ]]; then
    return 0
  fi
  echo "install-deps: installing ${missing[*]}"
  if [[ $updated -eq 0 ]]; then
    $sudo apt-get update -q
    updated=1
  fi
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
}

install_missing "${packages[@]}"

if [[ "${1:-}" == "fuzz" ]]; then
  install_missing clang
  # libFuzzer and the sanitizer runtimes ship apart from the compiler, one package per major
  # version (libclang-rt-14-dev for Debian 12's clang 14).
  clang_major=$(clang++ -dumpversion | cut -d. -f1)
  install_missing "libclang-rt-${clang_major}-dev"
fi

if [[ "${1:-}" == "valgrind" ]]; then
  install_missing valgrind
fi
