#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Builds and runs the whole suite: scripts/test.sh [--sanitizers] [--update-expected] [arguments of ctest]
# Without --sanitizers the release build is tested; with it, the address and undefined-behaviour build, then the thread one.
set -euo pipefail
cd "$(dirname "$0")/.."

presets=(release)
warnings_are_errors=${CI:+ON}
if [ "${1:-}" = --sanitizers ]; then
    presets=(asan tsan)
    warnings_are_errors=OFF # instrumented code makes GCC warn of what is not so, in the standard library above all
    shift
fi

if [ "${1:-}" = --update-expected ]; then
    export K7_UPDATE_EXPECTED=1 # the tool's reports of the captured machines become what is expected of it
    shift
fi

scripts/setup.sh test
for preset in "${presets[@]}"; do
    cmake --preset "$preset" -DK7SAL_WERROR="$warnings_are_errors" >/dev/null
    cmake --build --preset "$preset"
    ctest --preset "$preset" --parallel "$(($(nproc) * 2))" "$@"
done
