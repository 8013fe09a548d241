// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The attempt and the last failure.
#include "Foundation/J3Exception.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemPath_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <system_error>

namespace Kivo {

namespace {

/// Has no destructor, so that operations still work in those of thread_local and static objects.
struct ThreadFailure {
    const char* operation; ///< the outermost one under way, or the last one
    int depth;             ///< operations under way
    bool failed;
    int errorCode;
    char reason[192];
    char subject[512];
};

constinit thread_local ThreadFailure t_failure{};

} // namespace

void requireLiveSystem() { require(!hasSystemRoot(), "needs the live system"); }

Operation::Operation(const char* name) noexcept : _hadFailure(t_failure.depth > 0 && t_failure.failed)
{
    if (t_failure.depth++ == 0) {
        t_failure.operation = name;
        t_failure.failed = false;
    }
}

Operation::~Operation() { --t_failure.depth; }

void Operation::succeeded() noexcept { t_failure.failed = _hadFailure; }

void noteFailure(const Reason& reason) noexcept
{
    if (t_failure.failed || t_failure.depth == 0)
        return;
    t_failure.failed = true;
    t_failure.errorCode = reason.errorCode;
    copyText(t_failure.reason, reason.text);
    copyText(t_failure.subject, reason.subject);
}

void noteException()
{
    const int errorCode = errno;
    try {
        throw;
    } catch (const Reason& reason) {
        noteFailure(reason);
    } catch (const J3String& message) {
        noteFailure({message.to_string(), errorCode, {}});
    } catch (const J3Exception& exception) {
        noteFailure({exception.what(), exception.errorCode(), {}});
    } catch (const std::system_error& error) {
        noteFailure({error.what(), error.code().value(), {}});
    }
}

K7SystemUtil::Failure K7SystemUtil::lastFailure()
{
    if (!t_failure.failed)
        return {};
    return {t_failure.operation, toWide(t_failure.reason), t_failure.errorCode, toWide(t_failure.subject)};
}

} // namespace Kivo
