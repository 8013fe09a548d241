// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What every command of the tool is made of.
#pragma once

#include "Inventory/Listing.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <span>
#include <string>

namespace K7Tool {

/// The tool's exit codes.
enum ExitCode {
    EXIT_DONE = 0,   ///< done, or the answer is yes
    EXIT_FAILED = 1, ///< failed, or the answer is no
    EXIT_USAGE = 2,  ///< wrong usage
};

class CapturedRoot;

/// What the options before and after a command say, and how the command ended.
struct Session {
    std::string root; ///< the captured tree as it was named; empty on the running machine
    std::shared_ptr<CapturedRoot> captured;
    bool json = false;
    int exitCode = EXIT_DONE;

    [[nodiscard]] bool isLive() const { return root.empty(); }
};

/// A word that follows "k7sal".
struct Command {
    const char* name;
    const char* help;

    /// Declare the command's options; when it is given, it runs and leaves its exit code in the session.
    void (*declare)(CLI::App& command, Session& session);
};

void declareReport(CLI::App& command, Session& session);
void declareCapture(CLI::App& command, Session& session);
void declareDiff(CLI::App& command, Session& session);
void declareProcess(CLI::App& command, Session& session);
void declareWatch(CLI::App& command, Session& session);
void declareNet(CLI::App& command, Session& session);
void declareDns(CLI::App& command, Session& session);
void declarePing(CLI::App& command, Session& session);
void declareLua(CLI::App& command, Session& session);

/// Every command, in the order of the help.
[[nodiscard]] std::span<const Command> commands();

/// Refuse a command that changes the machine while a captured tree is read.
void refuseRoot(const Session& session, const std::string& command);

/// Say on standard error what failed and, from the library's last failure, why. @return EXIT_FAILED
int failed(const std::string& what);

/// The same with a reason of the tool's own.
int failed(const std::string& what, const std::string& reason, int errorCode = 0, const std::string& subject = {});

/// Say on standard error what could not be read, a line each. @return EXIT_DONE when there is nothing to say
int reportProblems(const std::vector<Kivo::Inventory::Problem>& problems);

/// A note on standard error that is no failure.
void warn(const std::string& text);

} // namespace K7Tool
