// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reading single facts below the system root, and interrupting a command.
#pragma once

#include "Document.h"

namespace K7Tool {

/// A one-line attribute file, without white space at its ends; null when there is none.
Json attribute(const std::string& path);

/// An attribute that is a whole number; null when it is none.
Json number(const std::string& path);

/// The last component of a link's target: the name of a driver behind ".../driver"; null when there is no link.
Json linkName(const std::string& path);

/// The names in a directory, in ascending order; none when it cannot be read.
std::vector<std::string> namesIn(const std::string& directory);

/// A fact as a cell: "-" for one that could not be had.
std::string cell(const Json& fact);

} // namespace K7Tool
