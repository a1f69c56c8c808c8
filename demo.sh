#!/usr/bin/env bash
# Shows Quillport at work, with no RTU at hand: starts the simulated RTU on this machine, logs in to it over
# FTP and HTTP, shows its panel, and brings its application and its operating system home.
set -euo pipefail
cd "$(dirname "$0")"

scripts/setup.sh run
cmake --preset release -DQUILLPORT_TESTS=OFF -DQUILLPORT_BENCHMARKS=OFF >/dev/null
cmake --build --preset release -j 2 --target quillportctl -- --quiet

home=build/demo-files
rm -rf "$home"
mkdir -p "$home"

# The simulated RTU ends when its standard input does, that is, with this script.
coproc RTU { exec /usr/bin/python3 simulator/rtu_simulator.py --board K5902; }
read -r ready <&"${RTU[0]}"
port() { grep -oE "\"$1\": *[0-9]+" <<<"$ready" | grep -oE '[0-9]+$'; }

ctl=(build/release/apps/quillportctl/quillportctl
  --host rtu.demo --part-number K5902 --user rtu
  --connect-to "rtu.demo:21:127.0.0.1:$(port ftp)"
  --connect-to "rtu.demo:80:127.0.0.1:$(port http)")
export QUILLPORT_PASSWORD=rtu

show() {
  printf '\n$ quillportctl %s\n' "$*"
  "${ctl[@]}" "$@"
}

cat <<TEXT

A simulated RTU is up: FTP on port $(port ftp), web server on port $(port http), board K5902, user rtu, password rtu.
TEXT
show info
show get application --to "$home"
show get os --to "$home"

printf '\nWhat has come home:\n'
(cd "$home" && find . -type f -printf '%10s bytes  %P\n' | sort -k3)
printf '\nThe same folders are what a later send picks up again.\n'
