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

} // namespace K7Test
