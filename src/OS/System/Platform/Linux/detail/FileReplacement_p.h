// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Replaces a file so that its readers see the old or the new contents, never a part.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include <string>
#include <string_view>

#include <sys/types.h>

namespace Kivo {

/// Give the file at an absolute path below the system root new contents, or make it.
///
/// The contents are written to a temporary file beside the file that the path's links lead to, synced, and renamed to
/// it. Where the directory takes no file or the file no rename (it is a mount of its own), the file is written over,
/// with the room for it taken beforehand, and cut to length. A failure leaves the old contents, unless the medium fails
/// in the middle of writing over.
/// @param mode the file's mode afterwards, whatever the umask
/// Raises a reason with the first errno and the path.
void replaceFile(const std::string& path, std::string_view contents, mode_t mode);

} // namespace Kivo
