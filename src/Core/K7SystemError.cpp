// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trace of failed system calls.
#include "Core/K7SystemError.h"

#include "Base/HandlerSlot_p.h"
#include "Base/UniqueFd_p.h"

#include <cstring>

#include <unistd.h>

namespace Kivo {
namespace {

constinit HandlerSlot<const J3String&, int> s_handler;

/// One write, so that the lines of several threads do not mix.
void writeLine(const J3String& tag, int errorCode)
{
    const int before = errno;
    const char* reason = strerrordesc_np(errorCode);
    const std::string line =
        J3String().format(L"%@: %s (errno %d)\n", &tag, reason ? reason : "unknown error", errorCode).to_string();
    retried([&] { return write(STDERR_FILENO, line.data(), line.size()); });
    errno = before;
}

} // namespace

void K7SystemError::trace(const J3String& tag, int errorCode)
{
    if (!s_handler.call(tag, errorCode))
        writeLine(tag, errorCode);
}

K7SystemError::Handler K7SystemError::setHandler(Handler handler) { return s_handler.set(handler); }

void K7SystemError::setHandler(ContextHandler handler, void* context) { s_handler.set(handler, context); }

} // namespace Kivo
