// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Digests of files.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/Platform/Linux/detail/Progress_p.h"

namespace Kivo {

enum class DigestKind { MD5, SHA256 };

/// The digest of a regular file or a block device in lower-case hexadecimal digits; raises a reason without one.
std::string digestOfFile(DigestKind kind, const char* path, const ProgressReport& report);

} // namespace Kivo
