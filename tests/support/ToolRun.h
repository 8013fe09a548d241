// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Runs the command line tool and takes what it prints.
#pragma once

#include <string>
#include <vector>

namespace K7Test {

struct Outcome {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Run k7sal with these arguments, standard output and error being files.
/// @param interruptAfterMs sends SIGINT after so many milliseconds; 0 for never
Outcome runTool(std::vector<std::string> arguments, int interruptAfterMs = 0);

/// Run a shell command in which "$K7SAL" is the tool, its output and errors being files.
Outcome runShell(const std::string& command);

/// A window that the tool may find its standard output in.
struct Window {
    unsigned short rows = 24;
    unsigned short columns = 80;
    std::vector<std::string> environment = {"TERM=xterm"};
};

/// Run k7sal on a terminal. @return all that the terminal was sent
std::string runOnTerminal(std::vector<std::string> arguments, const Window& window);

} // namespace K7Test
