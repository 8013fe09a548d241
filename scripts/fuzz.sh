#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Builds the fuzz targets and runs each for some seconds, from the captured files: scripts/fuzz.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-10}
shift $(($# > 0))
scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz/all
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(basename -s .cpp fuzz/*.cpp)

corpus=build/fuzz/corpus
mkdir -p "$corpus/seeds" build/fuzz/found
find tests/fixtures -type f -size -64k -exec cp -t "$corpus/seeds" --backup=numbered {} +
for target in "${targets[@]}"; do
    mkdir -p "$corpus/$target"
    "build/fuzz/fuzz/$target" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix=build/fuzz/found/ "$corpus/$target" "$corpus/seeds" 2>"build/fuzz/$target.log" ||
        { tail -n 60 "build/fuzz/$target.log"; echo "fuzz.sh: $target failed; its input is in build/fuzz/found/" >&2; exit 1; }
    echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$target.log") inputs in $seconds s"
done
