#!/usr/bin/env bash
# Runs every benchmark with its peer beside it and prints the figures. Asserts nothing; wants a quiet machine.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release -j 2 >/dev/null

ctl=build/release/apps/quillportctl/quillportctl
title() { printf '\n== %s\n' "$1"; }

title "login to filled panel"
benchmarks/panel_fill.py "$ctl"
title "listing parser"
build/release/benchmarks/listing_parser_benchmark
title "validation of a configuration"
build/release/benchmarks/config_validation_benchmark
title "verification of a configuration"
benchmarks/verification.py "$ctl"
title "memory of an upload"
benchmarks/upload_memory.py "$ctl"
