#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Makes the documentation of the public headers: build/docs/html/ and build/docs/operations.md, an index of operations.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh lint
mkdir -p build/docs
doxygen docs/Doxyfile
scripts/operations.py build/docs/xml >build/docs/operations.md
