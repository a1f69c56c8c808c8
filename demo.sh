#!/usr/bin/env bash
# Shows Quillport at work, with no RTU at hand: starts the simulated RTU on this machine and opens the window on
# it. Where there is no display, the terminal program logs in to it over FTP and HTTP, shows its panel, and brings its
# application and its operating system home.
#
#   ./demo.sh                 the window where there is a display, else the terminal program
#   ./demo.sh terminal        the terminal program in any case
set -euo pipefail
cd "$(dirname "$0")"

program=quillportctl
if [ "${1:-}" != terminal ] && [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  program=quillport
fi

scripts/setup.sh run
echo "building $program"
cmake --preset release -DQUILLPORT_TESTS=OFF -DQUILLPORT_BENCHMARKS=OFF >/dev/null
cmake --build --preset release -j 2 --target "$program" -- --quiet

# The simulated RTU ends when its standard input does, that is, with this script.
coproc RTU { exec /usr/bin/python3 simulator/rtu_simulator.py --board K5902; }
read -r ready <&"${RTU[0]}"
port() { grep -oE "\"$1\": *[0-9]+" <<<"$ready" | grep -oE '[0-9]+$'; }

connection=(--host rtu.demo --part-number K5902
  --connect-to "rtu.demo:21:127.0.0.1:$(port ftp)"
  --connect-to "rtu.demo:80:127.0.0.1:$(port http)")

cat <<TEXT

A simulated RTU is up: FTP on port $(port ftp), web server on port $(port http).

  RTU host    rtu.demo
  Board       K5902
  User name   rtu
  Password    rtu

TEXT

if [ "$program" = quillport ]; then
  echo "Type the user name and the password in the window and press Connect. The demo ends with the window."
  build/release/apps/quillport/quillport "${connection[@]}"
  exit 0
fi

home=build/demo-files
rm -rf "$home"
mkdir -p "$home"
export QUILLPORT_PASSWORD=rtu

show() {
  printf '$ quillportctl %s\n' "$*"
  build/release/apps/quillportctl/quillportctl "${connection[@]}" --user rtu "$@"
  echo
}
show info
show get application --to "$home"
show get os --to "$home"

echo 'What has come home:'
(cd "$home" && find . -type f -printf '%10s bytes  %P\n' | sort -k3)
printf '\nThe same folders are what a later send picks up again.\n'
