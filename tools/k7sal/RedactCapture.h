// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A whole capture with stand-ins in place of what it gives away.
#pragma once

#include "Manifest.h"

#include <filesystem>

namespace K7Tool {

/// Copy a captured tree with stand-ins in place of addresses, serial numbers, names and command lines: in contents,
/// links and names. The manifest and the report are changed likewise.
/// @throws std::system_error when the copy cannot be written
void redactCapture(const std::filesystem::path& from, const std::filesystem::path& to, Manifest* manifest,
                   Json* report);

} // namespace K7Tool
