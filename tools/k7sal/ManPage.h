// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tool's manual page, made of its commands' options and the column tables.
#pragma once

#include <CLI/CLI.hpp>

namespace K7Tool {

/// Prints the manual page; no part of the help.
constexpr const char* MAN_OPTION = "--man";

void declareManOption(CLI::App& app);

} // namespace K7Tool
