#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Compares what a shared library exports with the list that is checked in, so that no symbol comes or goes unseen.
# usage: exports.sh LIBRARY LIST [--update]
# Type information, virtual tables and template instances are left out: which of them stand alone is the compiler's choice.
set -euo pipefail

exported() {
    nm -D --defined-only -C "$1" | awk '$2 ~ /^[TDBR]$/' | cut -d' ' -f3- | sed 's/@@.*//' |
        grep -vE '^(typeinfo|vtable|construction vtable|non-virtual thunk)|J3Singleton<|K7CounterFormatter<|castFrom\w*<' | LC_ALL=C sort -u
}

if [ "${3:-}" = --update ]; then
    exported "$1" >"$2"
elif ! difference=$(diff "$2" <(exported "$1")); then
    printf '%s\n' "$difference" "$1 exports other symbols than $2 says; if that is meant: $0 $1 $2 --update"
    exit 1
fi
