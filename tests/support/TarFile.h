// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Tar archives with whatever a test wants in them.
#pragma once

#include <string>

struct archive;

namespace K7Test {

/// A gzip-compressed tar archive, entry by entry.
class TarFile {
public:
    explicit TarFile(const std::string& path);
    ~TarFile();
    TarFile(const TarFile&) = delete;
    TarFile& operator=(const TarFile&) = delete;

    TarFile& file(const std::string& name, const std::string& contents);
    TarFile& link(const std::string& name, const std::string& target);
    TarFile& hardLink(const std::string& name, const std::string& target);
    TarFile& fifo(const std::string& name);

    /// A file of zeros.
    TarFile& zeros(const std::string& name, std::size_t size);

private:
    archive* _archive;
};

} // namespace K7Test
