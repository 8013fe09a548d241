#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Checks that nothing in a shared library is destroyed when the process or a thread ends, by looking for who registers a
# destructor. Boost's header for error categories may: it has a table of its own that no code here uses.
# usage: lifetimes.sh LIBRARY
set -euo pipefail

registrations=$(objdump -d --no-show-raw-insn -C "$1" |
    awk '/^[0-9a-f]+ <.*>:$/ { function_name = $0 }
         /<__cxa_(thread_)?atexit@plt>$/ { print function_name }' |
    sed -E 's/^[0-9a-f]+ <(.*)>:$/\1/' | grep -v '^boost::system::' | LC_ALL=C sort -u || true)
[ -z "$registrations" ] && exit 0
printf '%s\n' "$1 destroys objects at exit that callers may still use; make them immortal (Foundation/J3Immortal.h):" \
    "$registrations"
exit 1
