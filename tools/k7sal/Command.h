// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What every command of the tool is made of.
#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <string>

namespace K7Tool {

using Json = nlohmann::ordered_json;

/// The tool's exit codes.
enum ExitCode {
    EXIT_DONE = 0,  ///< done, or so
    EXIT_NOT = 1,   ///< the thing asked about is not so, or failed
    EXIT_USAGE = 2, ///< wrong use
};

/// What the options before and after a command say, and how the command ended.
struct Session {
    std::string root;
    bool json = false;
    int exitCode = EXIT_DONE;
};

// Each declares a command; when it is given, it runs and leaves its exit code in the session.
void addReportCommand(CLI::App& app, Session& session);
void addCaptureCommand(CLI::App& app, Session& session);
void addProcessCommand(CLI::App& app, Session& session);
void addNetCommand(CLI::App& app, Session& session);
void addDnsCommand(CLI::App& app, Session& session);
void addPingCommand(CLI::App& app, Session& session);

/// Declare the option that asks for one JSON document in place of text.
void addJsonOption(CLI::App& command, Session& session);

/// Refuse a command that changes the machine while a captured tree is read.
void refuseRoot(const Session& session, const std::string& command);

/// Say on standard error what failed and, from the library's last failure, why. @return EXIT_NOT
int failed(const std::string& what);

/// The same with a reason of the tool's own.
int failed(const std::string& what, const std::string& reason, int errorCode = 0);

void printJson(const Json& document);

} // namespace K7Tool
