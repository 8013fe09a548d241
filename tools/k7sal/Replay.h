// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a captured machine said of itself, for what its files alone cannot tell.
#pragma once

#include "Document.h"

#include <string>

namespace K7Tool {

/// Parse a JSON text from outside: depth and number of values are bounded before they are built.
/// @throws std::runtime_error
[[nodiscard]] Json parseBounded(const std::string& text);

/// The report that came with the captured tree that is read from now on; null for none.
void setCapturedReport(Json report);

/// Take what is not known of a section's records from the captured report.
/// @return whether anything was taken
bool completeFromCapture(const Kivo::Inventory::Section& section, Kivo::Inventory::Collected* data);

/// Take all records from the captured report, where the tree has nothing to list them from.
bool listFromCapture(const Kivo::Inventory::Section& section, Kivo::Inventory::Collected* data);

/// A record's IDENTITY values as one text; empty when it has none.
[[nodiscard]] std::string identityOf(const std::vector<Kivo::Inventory::ColumnInfo>& columns,
                                     const std::vector<Kivo::Inventory::Value>& row);

} // namespace K7Tool
