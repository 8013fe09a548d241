// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Plain files of the tool's own, written without a word lost.
#pragma once

#include "Base/UniqueFd_p.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace K7Tool {

/// A new file, written from its beginning on.
class FileWriter {
public:
    /// @throws std::system_error when it cannot be made, or is there already
    explicit FileWriter(std::filesystem::path path);

    /// @throws std::system_error when not all of it can be written
    void write(std::string_view bytes);

    /// Close the file; some file systems tell only then that they are full. @throws std::system_error
    void close();

private:
    std::filesystem::path _path;
    Kivo::UniqueFd _fd;
};

/// Write a whole new file, with the directories above it. @throws std::system_error
void writeFile(const std::filesystem::path& path, std::string_view contents);

/// A regular file of at most 16 MiB. @throws std::system_error, and EFBIG for a larger one
[[nodiscard]] std::string contentsOf(const std::filesystem::path& path);

} // namespace K7Tool
