// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A command runner for the tests: notes what it is told to run and runs nothing.
#include "support/RecordingRunner.h"

#include <cstring>

namespace K7Test {

using Shell = Kivo::K7SystemUtil::Shell;

static RecordingRunner* s_current = nullptr;

RecordingRunner::RecordingRunner()
{
    s_current = this;
    Shell::setImplFunction0([](const char* command, auto* listener) { return s_current->run(command, listener); });
    Shell::setImplFunction1([](const char* command, char* buffer) {
        if (buffer)
            std::strcpy(buffer, s_current->output.c_str());
        return s_current->run(command, nullptr);
    });
}

RecordingRunner::~RecordingRunner()
{
    Shell::setImplFunction0(nullptr);
    Shell::setImplFunction1(nullptr);
}

Kivo::int32 RecordingRunner::run(const char* command, Shell::CoutListener* listener)
{
    _commands.emplace_back(command);
    return behaviour ? behaviour(command, listener) : result;
}

} // namespace K7Test
