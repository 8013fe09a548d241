// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Prints how much memory is in use, and on which kernel.
#include "Core/K7Version.h"
#include "OS/System/K7SystemUtil.h"

#include <iostream>

using Kivo::K7SystemUtil;

int main()
{
    const auto total = K7SystemUtil::Memory::getMemTotal();
    const auto free = K7SystemUtil::Memory::getMemFree();
    if (total == 0) {
        std::cerr << K7SystemUtil::lastFailure().reason.to_string() << "\n";
        return 1;
    }
    Kivo::J3String kernel;
    K7SystemUtil::OS::getKernelVersion(&kernel);
    std::cout << (total - free) / 1024 << " of " << total / 1024 << " MiB in use on Linux " << kernel.to_string()
              << "\n";
}
