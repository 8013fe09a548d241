#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Builds the tool and runs it: scripts/run.sh [arguments of k7sal], "report" by default.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)

"$top/scripts/setup.sh" build
# The build speaks only when it fails, so that the tool's output stands alone.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
build() {
    cmake -S "$top" --preset release -DK7SAL_TESTS=OFF -DK7SAL_BENCHMARKS=OFF -B "$top/build/run" &&
        cmake --build "$top/build/run" --target k7sal
}
(cd "$top" && build) >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
[ $# -gt 0 ] || set -- report
rm -f "$log"
exec "$top/build/run/tools/k7sal/k7sal" "$@"
