// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Kernel modules by name.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

namespace Kivo {

/// Loads and unloads kernel modules, by the host's command runner.
///
/// A module's name goes to the shell unquoted: it must come from the application, never from outside.
/// *Threads*: any. *Privilege*: CAP_SYS_MODULE, in the runner.
class K7SAL_API K7SystemUtil::DriverModule {
public:
    DriverModule() = delete;

    /// Load a module and what it needs: "modprobe NAME".
    /// @return whether the command gave 0; false, without a command, when there is no name
    static bool load(const char* moduleName);

    /// Unload a module and what only it needed: "modprobe -r NAME". @return as load()
    static bool unload(const char* moduleName);
};

} // namespace Kivo
