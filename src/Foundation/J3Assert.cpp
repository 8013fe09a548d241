// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Report of a violated precondition.
#include "Foundation/J3Assert.h"

#include "Base/HandlerSlot_p.h"
#include "Base/UniqueFd_p.h"

#include <algorithm>

#include <unistd.h>

namespace Kivo {
namespace {

// Constant-initialised, so that a static initialiser may already assert.
constinit HandlerSlot<const J3String&, const J3String&, const J3String&, const J3String&, int> s_handler;
constexpr J3AssertFunc REPORTER{};

// In one write, so that the lines of several threads and processes stay whole; what cannot be written is lost.
void reportOnStandardError(const J3String& expression, const J3String& message, const J3String& function,
                           const J3String& path, int line)
{
    const int errorBefore = errno;
    J3String report;
    report.format(L"%@:%d: %@: %@ (%@)", &path, line, &function, &message, &expression);
    std::string bytes = report.to_string();
    std::replace_if(
        bytes.begin(), bytes.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    bytes += '\n';
    retried([&] { return write(STDERR_FILENO, bytes.data(), bytes.size()); });
    errno = errorBefore;
}

} // namespace

void J3AssertFunc::operator()(const J3String& expression, const J3String& message, const J3String& function,
                              const J3String& path, int line) const
{
    if (!s_handler.call(expression, message, function, path, line))
        reportOnStandardError(expression, message, function, path, line);
}

J3AssertFunc::Handler J3AssertFunc::setHandler(Handler handler) { return s_handler.set(handler); }

void J3AssertFunc::setHandler(ContextHandler handler, void* context) { s_handler.set(handler, context); }

constinit const J3AssertFunc& j3assertFunc = REPORTER;

} // namespace Kivo
