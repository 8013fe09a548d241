// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Single facts that the kernel gives as small files and links.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <string>
#include <vector>

namespace Kivo {

/// Typed reading of what the kernel shows as small files, links and directories (`/proc`, `/sys`), below the system
/// root.
///
/// Each operation gives false, with its output as it was, when the file is not there, cannot be read or does not hold
/// what was asked for; lastFailure() then tells the reason, the errno (ENOENT: there is no such file) and the path.
/// Paths are absolute and without the system root. *Threads*: any.
class K7SAL_API K7SystemUtil::Attribute {
public:
    Attribute() = delete;

    /// Read a text file without the white space at its ends; what lies beyond 4 KiB is left out.
    static bool readText(const char* path, std::string* text);

    /// Read a file that holds one whole number.
    /// @param path   the file
    /// @param number takes the number
    /// @param base   10, or 16 for digits with or without "0x"
    static bool readNumber(const char* path, int64* number, int base = 10);

    /// Read a file that holds "0" or "1" ("N" or "Y").
    static bool readFlag(const char* path, bool* flag);

    /// Read the last component of a symbolic link's target: the driver's name behind ".../driver".
    static bool readLinkName(const char* path, std::string* name);

    /// Read the target of a symbolic link as it stands.
    static bool readLink(const char* path, std::string* target);

    /// Read a whole file of any bytes; one of more than 16 MiB cannot be read (EFBIG).
    static bool readContents(const char* path, std::string* bytes);

    /// List the names in a directory, without "." and "..", in ascending order of their bytes; one of more than
    /// 1,048,576 names cannot be listed (EOVERFLOW).
    static bool listNames(const char* path, std::vector<std::string>* names);
};

} // namespace Kivo
