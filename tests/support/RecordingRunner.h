// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A command runner for the tests: notes what it is told to run and runs nothing.
#pragma once

#include "OS/System/Shell.h"

#include <functional>
#include <vector>

namespace K7Test {

/// Installs itself as both delegated runners for as long as it lives.
class RecordingRunner {
public:
    /// What the next commands give; a function of the command when that is set.
    int result = 0;
    std::function<int(const std::string& command, Kivo::K7SystemUtil::Shell::CoutListener*)> behaviour;

    /// What runCommandFromShell() leaves in a buffer that it is given.
    std::string output;

    RecordingRunner();
    ~RecordingRunner();
    RecordingRunner(const RecordingRunner&) = delete;
    RecordingRunner& operator=(const RecordingRunner&) = delete;

    [[nodiscard]] const std::vector<std::string>& commands() const { return _commands; }

private:
    Kivo::int32 run(const char* command, Kivo::K7SystemUtil::Shell::CoutListener* listener);

    std::vector<std::string> _commands;
};

} // namespace K7Test
