// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The kernel's version and uptime.
#include "OS/System/Platform/Linux/detail/KernelParser_p.h"

namespace Kivo {

// Linux version 6.1.0-56-arm64 (debian-kernel@lists.debian.org) (gcc-12 (Debian 12.2.0-14+deb12u1) 12.2.0, ...
bool parseKernelVersion(std::string_view line, K7Version* version)
{
    TextScanner scanner(line);
    uint8 numbers[3] = {};
    if (!scanner.literal("Linux"))
        return false;
    scanner.skipSpace(); // a blank in a format is any white space, or none
    if (!scanner.literal("version") || !scanner.number(&numbers[0]) || !scanner.literal(".") ||
        !scanner.number(&numbers[1]) || !scanner.literal(".") || !scanner.number(&numbers[2]))
        return false;
    version->setMajor(numbers[0]);
    version->setMinor(numbers[1]);
    version->setPatch(numbers[2]);
    return true;
}

// 12345.67 54321.00
// The kernel's decimal point is a point in every locale of the host.
double parseUptime(std::string_view line)
{
    double uptime = 0;
    return TextScanner(line).real(&uptime) && uptime > 0 ? uptime : 0.0;
}

} // namespace Kivo
