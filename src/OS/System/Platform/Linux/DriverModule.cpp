// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Kernel modules by name.
#include "OS/System/DriverModule.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Shell.h"

namespace Kivo {

namespace {

bool runOnModule(const char* operation, const wchar_t* format, const char* moduleName)
{
    return attempt(operation, [&] {
        require(hasText(moduleName), "no module name");
        return K7SystemUtil::Shell::runCommand(format, moduleName) == 0;
    });
}

} // namespace

bool K7SystemUtil::DriverModule::load(const char* moduleName)
{
    return runOnModule("DriverModule::load", L"modprobe %s", moduleName);
}

bool K7SystemUtil::DriverModule::unload(const char* moduleName)
{
    return runOnModule("DriverModule::unload", L"modprobe -r %s", moduleName);
}

} // namespace Kivo
