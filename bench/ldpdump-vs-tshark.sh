#!/usr/bin/env bash
# Times ldpdump against tshark's LDP dissection on one capture of at least 100,000
# LDP PDUs (written by makeBigPcap), in the same run: `ldpdump -r BIG --stats` and
# `ldpdump -r BIG -q` (both validate every message) against `tshark -r BIG -Y ldp`.
# Each command runs RUNS times (default 3); the best wall-clock time counts.
# Installs Debian's tshark when it is missing; for manual runs, not for CI.
#
# Usage: bench/ldpdump-vs-tshark.sh [PDUS]     (environment: RUNS, BIG=path)
set -euo pipefail
cd "$(dirname "$0")/.."
pdus=${1:-100000}
runs=${RUNS:-3}
big=${BIG:-build/default/bench-big.pcap}

scripts/deps.sh
if ! command -v tshark >/dev/null; then
  echo "Installing tshark"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  echo "wireshark-common wireshark-common/install-setuid boolean false" |
    "${sudo_cmd[@]}" debconf-set-selections
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq tshark >/dev/null
fi

cmake --preset default >/dev/null
cmake --build --preset default --target ldpdump makeBigPcap >/dev/null
ldpdump=build/default/tools/ldpdump/ldpdump
build/default/tools/ldpdump/makeBigPcap "$big" "$pdus"

# The best of $runs wall-clock times of a command, in seconds.
best() {
  local best_s="" start end s
  for _ in $(seq "$runs"); do
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1 || true
    end=$(date +%s.%N)
    s=$(awk -v a="$start" -v b="$end" 'BEGIN { print b - a }')
    if [ -z "$best_s" ] || awk -v s="$s" -v b="$best_s" 'BEGIN { exit !(s < b) }'; then
      best_s=$s
    fi
  done
  printf '%.3f' "$best_s"
}

summary=$("$ldpdump" -r "$big" --stats) || { echo "ldpdump judged something invalid"; exit 1; }
echo "$summary" | grep -E '^(frames|PDUs|messages) '
t_stats=$(best "$ldpdump" -r "$big" --stats)
t_quiet=$(best "$ldpdump" -r "$big" -q)
t_tshark=$(best tshark -r "$big" -Y ldp)
echo "tshark frames matching 'ldp': $(tshark -r "$big" -Y ldp 2>/dev/null | wc -l)"

printf 'ldpdump -r BIG --stats  %8.3f s\n' "$t_stats"
printf 'ldpdump -r BIG -q       %8.3f s\n' "$t_quiet"
printf 'tshark -r BIG -Y ldp    %8.3f s\n' "$t_tshark"
awk -v t="$t_tshark" -v s="$t_stats" -v q="$t_quiet" \
  'BEGIN { printf "tshark / ldpdump --stats: %.1fx   tshark / ldpdump -q: %.1fx\n", t / s, t / q }'
