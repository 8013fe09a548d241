// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A command runner for the tests: notes what it is told to run and runs nothing.
#include "support/RecordingRunner.h"

#include <cstring>

namespace K7Test {

using Shell = Kivo::K7SystemUtil::Shell;

namespace {

RecordingRunner* s_current = nullptr;

} // namespace

RecordingRunner::RecordingRunner()
{
    s_current = this;
    Shell::setImplFunction0(run);
    Shell::setImplFunction1(runForOutput);
}

RecordingRunner::~RecordingRunner()
{
    Shell::setImplFunction0(nullptr);
    Shell::setImplFunction1(nullptr);
    s_current = nullptr;
}

Kivo::int32 RecordingRunner::run(const char* command, Shell::CoutListener* listener)
{
    s_current->_commands.emplace_back(command);
    return s_current->behaviour ? s_current->behaviour(command, listener) : s_current->result;
}

Kivo::int32 RecordingRunner::runForOutput(const char* command, char* output)
{
    if (output)
        std::strcpy(output, s_current->output.c_str());
    return run(command, nullptr);
}

} // namespace K7Test
