// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Switches of the kernel's trace recorder.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

namespace Kivo {

/// Switches the kernel-side trace recorder, through the files of its module and, for effects, the host's command
/// runner.
///
/// Only recorder 0 exists; every operation gives false for any other and does nothing.
/// *Threads*: any. *Privilege*: that of the module's files, in the runner.
class K7SAL_API K7SystemUtil::Debugging {
public:
    /// The recorders.
    enum { DT10 = 0 };

    Debugging() = delete;

    /// Start recording. @return always false: lastFailure() and isWorking() tell whether it records
    static bool init(int32 id);

    /// Stop recording. @return always false
    static bool cleanup(int32 id);

    /// Start recording: "echo c > /proc/dt10proc". @return whether the command gave 0
    static bool start(int32 id);

    /// Stop recording: "echo 0 > /proc/dt10proc". @return whether the command gave 0
    static bool stop(int32 id);

    /// Tell whether the recorder records. *Source*: /proc/dt10proc_status, whose first character is then "1"
    static bool isWorking(int32 id);

    /// Have the record written to a file that is named after the local time:
    /// "ProcFileOutput DIRECTORY/dt10_20240305070809.dat".
    /// @param id        DT10
    /// @param directory goes to the shell unquoted: it must come from the application, never from outside
    /// @return whether the command gave 0
    static bool dumpTo(int32 id, const J3String& directory);
};

} // namespace Kivo
