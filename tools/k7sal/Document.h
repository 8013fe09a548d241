// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What was read of a machine, section by section, and its one JSON form.
#pragma once

#include "Inventory/Section.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace K7Tool {

using Json = nlohmann::ordered_json;

/// The records of one section, or what was made of them, with their columns.
struct Sheet {
    const char* key;
    const char* heading;
    Kivo::Inventory::Shape shape;
    std::size_t busiest; ///< as Section::busiest
    std::vector<Kivo::Inventory::ColumnInfo> columns;
    Kivo::Inventory::Collected data;
    bool completed = false; ///< whether the captured report told what the captured tree could not

    /// Keep these columns alone, in this order.
    void select(const std::vector<std::size_t>& chosen);
};

using Document = std::vector<Sheet>;

using Sections = std::vector<const Kivo::Inventory::Section*>;

/// What a report shows when no section is named.
[[nodiscard]] Sections reportSections();

/// The sections of these keys. @throws CLI::ValidationError for a key that there is not
[[nodiscard]] Sections namedSections(const std::vector<std::string>& keys);

/// Read a section now, from the machine or the captured tree.
[[nodiscard]] Sheet collectSheet(const Kivo::Inventory::Section& section);

/// What was read of a section's subject by other means.
[[nodiscard]] Sheet sheetOf(const Kivo::Inventory::Section& section, Kivo::Inventory::Collected collected);

/// Read sections now, in their order.
[[nodiscard]] Document collectDocument(const Sections& sections = reportSections());

/// What could not be read, of all sections.
[[nodiscard]] std::vector<Kivo::Inventory::Problem> problemsOf(const Document& document);

/// Null for what is not known.
[[nodiscard]] Json toJson(const Kivo::Inventory::Value& value);

/// An object, or an array of them; null for a list that is not known.
[[nodiscard]] Json toJson(const Sheet& sheet);

/// An object with the form's version, the problems, and each section under its key.
[[nodiscard]] Json toJson(const Document& document);

/// A document without sections, for a command that has results of its own.
[[nodiscard]] Json emptyDocument(const std::vector<Kivo::Inventory::Problem>& problems = {});

/// JSON as text that a terminal may be shown: whatever would act on one is escaped.
/// @param indent -1 for a single line
[[nodiscard]] std::string jsonText(const Json& json, int indent = 2);

/// Print a document on lines of its own.
void printJson(const Json& json);

} // namespace K7Tool
