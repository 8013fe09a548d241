// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The attempt: a reason raised inside an operation becomes its failure result and the last failure.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/K7SystemUtilClass.h"

#include <cerrno>
#include <string>
#include <type_traits>

namespace Kivo {

/// Why an operation cannot go on; thrown inside an attempt() and caught there.
struct Reason {
    std::string text;
    int errorCode = 0;
};

/// Raise @p reason unless @p holds: for arguments and contents.
inline void require(bool holds, const char* reason)
{
    if (!holds)
        throw Reason{reason, 0};
}

/// Raise @p reason with the current errno unless @p succeeded: for system calls.
inline void requireCall(bool succeeded, const char* reason)
{
    if (!succeeded)
        throw Reason{reason, errno};
}

/// Raise a reason when a captured tree is being read: what follows only a live kernel can answer.
void requireLiveSystem();

inline bool hasText(const char* text) { return text && *text; }

void clearFailure();
void rememberFailure(const char* operation, const Reason& reason);

/// Turn the exception in flight into the last failure of @p operation, if it is a reason, a message or a system error;
/// any other, such as one for want of memory, goes on to the operation's caller.
void rememberException(const char* operation);

/// Run the steps of an operation; give what they return, or @p failed once they raise a reason.
/// @param operation "Class::operation", a literal
template <class Result, class Steps>
Result attemptOr(const char* operation, Result failed, Steps&& steps)
{
    clearFailure();
    try {
        return steps();
    } catch (...) {
        rememberException(operation);
        return failed;
    }
}

/// The same for steps that end in success unless they raise a reason (or return a bool of their own).
template <class Steps>
bool attempt(const char* operation, Steps&& steps)
{
    return attemptOr(operation, false, [&] {
        if constexpr (std::is_void_v<decltype(steps())>) {
            steps();
            return true;
        } else {
            return steps();
        }
    });
}

} // namespace Kivo
