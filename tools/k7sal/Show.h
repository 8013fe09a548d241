// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Showing what was read, as text or JSON, with the columns that were asked for.
#pragma once

#include "Command.h"
#include "Render.h"

namespace K7Tool {

/// The option -o COLUMN,... of a command that shows sections.
struct ColumnOption {
    std::vector<std::string> names;

    /// Declare the option, which must not outlive this.
    void declare(CLI::App& command);

    [[nodiscard]] bool isGiven() const { return !names.empty(); }
    [[nodiscard]] bool asksForHelp() const { return names.size() == 1 && names.front() == "help"; }

    [[nodiscard]] Detail detail() const { return isGiven() ? Detail::ALL : Detail::USUAL; }

    /// Keep the chosen columns of a sheet; all when none was named. @throws CLI::ValidationError for an unknown name
    void applyTo(Sheet& sheet) const;
};

/// Print the columns of sections: key, heading, unit and meaning. @return EXIT_DONE
int showColumns(const Sections& sections);

/// Print a document as the session wants it, and what could not be read to standard error.
/// @return EXIT_FAILED when something could not be read
int showDocument(const Session& session, const Document& document, Detail detail);

} // namespace K7Tool
