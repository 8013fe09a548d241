// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Report of a violated precondition.
#pragma once

#include "Foundation/J3String.h"

namespace Kivo {

/// Takes the report of a violated precondition and returns: an assertion reports, it never stops its caller.
class J3_API J3AssertFunc {
public:
    /// What a report is handed to: the five arguments of operator().
    using Handler = void (*)(const J3String& expression, const J3String& message, const J3String& function,
                             const J3String& path, int line);

    /// The same with a pointer of the host's own before them.
    using ContextHandler = void (*)(void* context, const J3String& expression, const J3String& message,
                                    const J3String& function, const J3String& path, int line);

    /// Report one violated precondition.
    /// @param expression the condition as written, "dest"
    /// @param message    what is wrong, "dest is Null!"
    /// @param function   the plain name of the function whose precondition it is
    /// @param path       its source below the source root, without extension
    /// @param line       the line in that source
    void operator()(const J3String& expression, const J3String& message, const J3String& function, const J3String& path,
                    int line) const;

    /// Replace what a report does; null brings back the default, one line on standard error.
    /// @return the handler that was replaced, null for the default and for one with a context
    /// *Threads*: safe at any time; a report under way may still reach the old handler.
    static Handler setHandler(Handler handler);

    /// The same with a handler that is given @p context, which must outlive every report.
    static void setHandler(ContextHandler handler, void* context);
};

J3_API extern const J3AssertFunc& j3assertFunc;

} // namespace Kivo

/// Report that @p condition does not hold. @p path is the reporting source below the source root, without extension.
#define J3_REPORT(condition, message, path) ::Kivo::j3assertFunc(condition, message, __func__, path, __LINE__)

/// Whether @p condition holds; one that does not is reported, as it is written here, with @p message.
///
///     if (!J3_REQUIRE(size > 0 && size < 128, "invalid size", SOURCE))
///         return;
///
/// The report names the function around it: not to be used inside a lambda.
#define J3_REQUIRE(condition, message, path) ((condition) ? true : (J3_REPORT(#condition, message, path), false))

/// Whether the pointer @p argument is given; a null one is reported under its name ("dest", "dest is Null!").
#define J3_REQUIRE_ARGUMENT(argument, path)                                                                            \
    ((argument) != nullptr ? true : (J3_REPORT(#argument, #argument " is Null!", path), false))
