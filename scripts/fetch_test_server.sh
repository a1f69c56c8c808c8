#!/usr/bin/env bash
# Fetches vsftpd, an FTP server that is not ours, for the tests: Debian's packages are unpacked into build/test-server.
# Nothing is installed, and no service is started.
set -euo pipefail
cd "$(dirname "$0")/.."

readonly target=build/test-server
if [[ -x $target/usr/sbin/vsftpd ]]; then
  exit 0
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch" # apt downloads as a user of its own
(cd "$scratch" && apt-get download -q vsftpd libwrap0)
mkdir -p "$target"
for package in "$scratch"/*.deb; do
  dpkg-deb -x "$package" "$target"
done
echo "vsftpd is in $target"
