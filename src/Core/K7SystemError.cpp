// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trace of failed system calls.
#include "Core/K7SystemError.h"

#include <atomic>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace Kivo {
namespace {

std::atomic<K7SystemError::Handler> s_handler{nullptr};

/// One write, so that the lines of several threads do not mix.
void writeLine(const J3String& tag, int errorCode)
{
    const int before = errno;
    const char* reason = strerrordesc_np(errorCode);
    const std::string line =
        J3String().format(L"%@: %s (errno %d)\n", &tag, reason ? reason : "unknown error", errorCode).to_string();
    while (write(STDERR_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
    }
    errno = before;
}

} // namespace

void K7SystemError::trace(const J3String& tag, int errorCode)
{
    const Handler handler = s_handler.load();
    (handler ? handler : writeLine)(tag, errorCode);
}

K7SystemError::Handler K7SystemError::setHandler(Handler handler) { return s_handler.exchange(handler); }

} // namespace Kivo
