#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Installs the Debian packages that the project needs and this machine lacks; quick when nothing is missing.
# usage: scripts/setup.sh [build|test|measure|fuzz|lint ...]     (default: build)
set -euo pipefail

packages=(ccache cmake g++ libarchive-dev libblkid-dev libboost-dev libcli11-dev liblua5.2-dev libssl-dev libutfcpp-dev
    ninja-build nlohmann-json3-dev pkg-config)
for purpose in "$@"; do
    case $purpose in
        build) ;;
        test) packages+=(e2fsprogs ethtool fdisk googletest iproute2 libfmt-dev libgtest-dev libbenchmark-dev
            strace) ;;
        measure) packages+=(iproute2 pciutils procps python3 time util-linux) ;;
        fuzz) packages+=(clang-14 libclang-rt-14-dev) ;;
        lint) packages+=(clang-format-14 clang-tidy-14 clang-14 doxygen python3) ;;
        *) echo "setup.sh: unknown purpose '$purpose' (build, test, measure, fuzz or lint)" >&2; exit 2 ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup.sh: as root, run: apt-get install ${missing[*]}" >&2; exit 1; }
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
{
    "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
} </dev/null >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
