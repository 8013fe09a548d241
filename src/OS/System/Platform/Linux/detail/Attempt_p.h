// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The attempt: a reason raised inside an operation becomes its failure result and the last failure.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/K7SystemUtilClass.h"

#include <cerrno>
#include <exception>
#include <string>
#include <string_view>
#include <type_traits>

namespace Kivo {

/// Why an operation cannot go on; thrown inside an attempt() and caught there.
struct Reason {
    std::string text;
    int errorCode = 0;
    std::string subject = {}; ///< the path, interface or device that it is about
};

/// Raise @p reason unless @p holds: for arguments and contents.
inline void require(bool holds, const char* reason, std::string_view subject = {})
{
    if (!holds)
        throw Reason{reason, 0, std::string(subject)};
}

/// Raise @p reason with the current errno unless @p succeeded: for system calls.
inline void requireCall(bool succeeded, const char* reason, std::string_view subject = {})
{
    if (!succeeded)
        throw Reason{reason, errno, std::string(subject)};
}

/// Raise a reason when a captured tree is being read: what follows only a live kernel can answer.
void requireLiveSystem();

inline bool hasText(const char* text) { return text && *text; }

/// Note why the operation under way fails. The first note of an operation stays: what follows tends to follow from it.
/// Without an operation nothing is noted.
void noteFailure(const Reason& reason) noexcept;

/// Note the exception in flight, if it is a reason, a message or a system error; any other, such as one for lack of
/// memory, goes on to the operation's caller.
void noteException();

/// An operation under way on this thread. The outermost one clears the last failure when it begins and gives it its
/// name; those inside add their reasons.
class Operation {
public:
    /// @param name "Class::operation", a literal
    explicit Operation(const char* name) noexcept;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

    /// Forget what was noted since this operation began: it succeeded all the same.
    void succeeded() noexcept;

private:
    bool _hadFailure;
};

/// Run the steps of an operation; give what they return, or @p failed once they raise a reason.
///
/// Steps that return @p failed without raising anything give an answer ("no", "none") unless an operation inside them
/// noted a failure, which then is this operation's too.
template <class Result, class Steps>
Result attemptOr(const char* name, Result failed, Steps&& steps)
{
    Operation operation(name);
    try {
        Result result = steps();
        if (!(result == failed))
            operation.succeeded();
        return result;
    } catch (...) {
        noteException();
        return failed;
    }
}

/// The same for steps that end in success unless they raise a reason (or return a bool of their own).
template <class Steps>
bool attempt(const char* name, Steps&& steps)
{
    return attemptOr(name, false, [&] {
        if constexpr (std::is_void_v<decltype(steps())>) {
            steps();
            return true;
        } else {
            return steps();
        }
    });
}

/// The same for an operation whose failures leave as exceptions, or as a false once they are noted.
template <class Steps>
auto attemptOrThrow(const char* name, Steps&& steps)
{
    Operation operation(name);
    try {
        auto result = steps();
        if (!std::is_same_v<decltype(result), bool> || result)
            operation.succeeded();
        return result;
    } catch (...) {
        const auto inFlight = std::current_exception();
        noteException();
        std::rethrow_exception(inFlight);
    }
}

/// Run a step whose failure does not matter. @return what it returns
template <class Step>
auto tolerated(Step&& step)
{
    Operation operation("");
    auto result = step();
    operation.succeeded();
    return result;
}

} // namespace Kivo
