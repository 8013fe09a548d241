// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tool's command runner for the library.
#pragma once

namespace K7Tool {

/// How many bytes the output form of the runner stores at most, the terminating zero included.
constexpr int MAX_CAPTURED_OUTPUT = 4096;

/// How long a line a listener is handed at most; a longer one comes in pieces.
constexpr int MAX_LINE_LENGTH = 4096;

/// Let the library run its commands with "/bin/sh -c". A listener is handed each line of the command's output as it
/// comes, with 0 as its value. The result is the exit code, 128 plus the signal's number for a command that a signal
/// ended, and -1 for one that could not be started.
void installCommandRunner();

} // namespace K7Tool
