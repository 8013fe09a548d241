// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Walks over everything below a directory.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3Types.h"

#include <string>

namespace Kivo {

/// Sum up the sizes of the regular files below @p path, each hard link once, into @p total, however it ends.
/// @return false, once that is noted, when something could not be looked at
bool sumSizes(const std::string& path, uint64* total);

/// Delete everything in the directory @p path. @return false, once that is noted, when something is left
bool clearDirectory(const std::string& path, int maxDepth);

} // namespace Kivo
