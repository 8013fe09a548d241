// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trace of failed system calls.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3String.h"

namespace Kivo {

/// Takes the report of a failed system call.
class K7CORE_API K7SystemError {
public:
    /// What a report is handed to: the two arguments of trace().
    using Handler = void (*)(const J3String& tag, int errorCode);

    /// The same with a pointer of the host's own before them.
    using ContextHandler = void (*)(void* context, const J3String& tag, int errorCode);

    /// Report a failed system call; errno keeps its value unless the handler changes it.
    /// @param tag       the step that failed, "USB::resetDevice(2)"
    /// @param errorCode its errno
    static void trace(const J3String& tag, int errorCode);

    /// Replace what a report does; null brings back the default, one line on standard error.
    /// @return the handler that was replaced, null for the default and for one with a context
    /// *Threads*: safe at any time; a report under way may still reach the old handler.
    static Handler setHandler(Handler handler);

    /// The same with a handler that is given @p context, which must outlive every report.
    static void setHandler(ContextHandler handler, void* context);
};

} // namespace Kivo
