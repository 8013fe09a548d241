// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Rates per second, look after look.
#pragma once

#include "Command.h"
#include "Document.h"

#include <functional>

namespace K7Tool {

struct WatchOptions {
    double interval = 1; ///< seconds between two looks
    int count = 0;       ///< how many looks; 0 until interrupted

    /// @param needed the option that they need; null when the command does nothing but watch
    void declare(CLI::App& command, CLI::Option* needed = nullptr);
};

/// Show the rates of what @p collect reads until the count is reached, the user interrupts or the output ends.
/// @return EXIT_FAILED when something could not be read at the last look
int watch(const Session& session, const WatchOptions& options, const std::function<Document()>& collect);

} // namespace K7Tool
