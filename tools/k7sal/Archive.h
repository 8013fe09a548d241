// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trees of captured files as tar archives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace K7Tool {

/// The bounds of a captured tree, be it a directory or an archive.
struct TreeLimits {
    static constexpr std::uint64_t FILE_BYTES = 16U << 20U;
    static constexpr std::uint64_t TOTAL_BYTES = 256U << 20U;
    static constexpr std::size_t ENTRIES = 50000; ///< more cannot be unpacked and removed within seconds
};

/// Whether a name ends as a compressed tar archive's does that packArchive() writes: ".tar.gz" or ".tgz".
[[nodiscard]] bool isArchiveName(const std::string& name);

/// Unpack a tar archive (plain, or compressed by gzip, xz or zstd) below an empty directory.
///
/// What a captured tree has no use for is refused: names that are absolute or hold "..", relative links that lead out,
/// hard links, devices, FIFOs, sockets, and whatever exceeds TreeLimits. An absolute link stays as it is: its readers
/// take the tree's top for "/".
/// @throws std::runtime_error that says what was refused, or std::system_error
void unpackArchive(const std::string& archive, const std::filesystem::path& directory);

/// Write the tree below @p directory as a gzip-compressed tar archive, every name led by @p top, and sync it.
/// @throws std::runtime_error, std::system_error
void packArchive(const std::filesystem::path& directory, const std::string& top, const std::filesystem::path& archive);

} // namespace K7Tool
