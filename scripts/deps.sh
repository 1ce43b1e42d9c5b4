#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, when any is missing.
# Usage: scripts/deps.sh [extra...] where each extra adds what one more build needs:
#   asan    clang's sanitizer runtimes (the asan preset)
#   m32     32-bit g++ and GoogleTest's sources (the m32 preset)
#   static  clang-tidy and cppcheck (scripts/static-checks)
#   package pkg-config, and dpkg-shlibdeps and file for cpack -G DEB (scripts/consumer-test)
set -euo pipefail
packages=(cmake ninja-build g++ clang python3 libgtest-dev libgmock-dev libbenchmark-dev clang-format
  libpcap-dev)
for extra in "$@"; do
  case "$extra" in
    asan) packages+=(libclang-rt-14-dev) ;;
    m32) packages+=(g++-multilib googletest) ;;
    static) packages+=(clang-tidy cppcheck) ;;
    package) packages+=(pkg-config dpkg-dev file) ;;
    *)
      echo "deps.sh: unknown extra '$extra' (known: asan m32 static package)" >&2
      exit 2
      ;;
  esac
done
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}" >/dev/null
fi
