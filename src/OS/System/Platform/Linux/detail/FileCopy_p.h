// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Copies of files.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/Platform/Linux/detail/Progress_p.h"

namespace Kivo {

/// Copy a regular file and flush the copy to its medium, also one that fails half way; raises a reason then.
void copyContents(const char* destPath, const char* srcPath, const ProgressReport& report);

} // namespace Kivo
