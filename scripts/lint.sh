#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Checks the form of the sources (clang-format) and their substance (clang-tidy): scripts/lint.sh [--fix]
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build test lint
mapfile -t files < <(git ls-files -- '*.h' '*.cpp')
if [ "${1:-}" = --fix ]; then
    clang-format-14 -i "${files[@]}"
else
    clang-format-14 --dry-run --Werror "${files[@]}"
fi

cmake --preset release >/dev/null
cmake --build --preset release --target all_verify_interface_header_sets # each public header compiles alone

# clang-tidy sees the headers through the sources that include them.
git ls-files -- 'src/*.cpp' 'tools/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build/release --quiet --warnings-as-errors='*' \
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-optimization-argument
