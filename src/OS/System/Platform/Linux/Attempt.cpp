// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The attempt and the last failure.
#include "Foundation/J3Exception.h"
#include "OS/System/Platform/Linux/Attempt_p.h"
#include "OS/System/Platform/Linux/SystemFile_p.h"
#include "OS/System/Platform/Linux/Text_p.h"

#include <system_error>

namespace Kivo {

namespace {

// Apart from the reason, which a thread makes only when something fails: clearing costs one store.
constinit thread_local const char* t_operation = nullptr;

Reason& lastReason()
{
    thread_local Reason t_reason;
    return t_reason;
}

} // namespace

void requireLiveSystem() { require(!hasSystemRoot(), "needs the live system"); }

void clearFailure() { t_operation = nullptr; }

void rememberFailure(const char* operation, const Reason& reason)
{
    t_operation = operation;
    lastReason() = reason;
}

void rememberException(const char* operation)
{
    try {
        throw;
    } catch (const Reason& reason) {
        rememberFailure(operation, reason);
    } catch (const J3String& message) {
        rememberFailure(operation, {message.to_string(), errno});
    } catch (const J3Exception& exception) {
        rememberFailure(operation, {exception.what(), exception.errorCode()});
    } catch (const std::system_error& error) {
        rememberFailure(operation, {error.what(), error.code().value()});
    }
}

K7SystemUtil::Failure K7SystemUtil::lastFailure()
{
    if (!t_operation)
        return {};
    return {t_operation, toWide(lastReason().text), lastReason().errorCode};
}

} // namespace Kivo
