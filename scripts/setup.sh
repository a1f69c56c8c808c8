#!/usr/bin/env bash
# Installs what Quillport needs on Debian 12. It asks nothing, works as root or through sudo, and a second
# run finds everything in place and changes nothing.
#
#   scripts/setup.sh run      what building and running needs
#   scripts/setup.sh          that, and what the tests and benchmarks need
set -euo pipefail

run_packages=(
  g++ cmake ninja-build pkg-config ccache
  libcurl4-openssl-dev libxml2-dev libcli11-dev nlohmann-json3-dev
  qt6-base-dev libgl-dev fonts-liberation fonts-dejavu-core
  python3 python3-pyftpdlib
)
test_packages=(
  libgtest-dev libbenchmark-dev clang-format clang-tidy libxml2-utils libwrap0
)

packages=("${run_packages[@]}")
case "${1:-all}" in
  run) ;;
  all) packages+=("${test_packages[@]}") ;;
  *)
    echo "usage: scripts/setup.sh [run]" >&2
    exit 2
    ;;
esac

missing=()
for package in "${packages[@]}"; do
  state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$state" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: everything is installed"
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing and need root to install: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get --yes --quiet)

echo "setup: installing ${missing[*]}"
"${apt[@]}" update >/dev/null
"${apt[@]}" install --no-install-recommends "${missing[@]}" >/dev/null
echo "setup: done"
