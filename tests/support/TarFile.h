// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Tar archives with whatever a test wants in them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <archive.h>
#include <archive_entry.h>

namespace K7Test {

/// A gzip-compressed tar archive, entry by entry.
class TarFile {
public:
    explicit TarFile(const std::string& path)
    {
        archive_write_set_format_gnutar(_archive.get());
        archive_write_add_filter_gzip(_archive.get());
        EXPECT_EQ(archive_write_open_filename(_archive.get(), path.c_str()), ARCHIVE_OK) << path;
    }

    TarFile& file(const std::string& name, const std::string& contents)
    {
        add(name, AE_IFREG,
            [&](archive_entry* entry) { archive_entry_set_size(entry, static_cast<la_int64_t>(contents.size())); });
        archive_write_data(_archive.get(), contents.data(), contents.size());
        return *this;
    }

    TarFile& link(const std::string& name, const std::string& target)
    {
        return add(name, AE_IFLNK, [&](archive_entry* entry) { archive_entry_set_symlink(entry, target.c_str()); });
    }

    TarFile& hardLink(const std::string& name, const std::string& target)
    {
        return add(name, AE_IFREG, [&](archive_entry* entry) { archive_entry_set_hardlink(entry, target.c_str()); });
    }

    TarFile& fifo(const std::string& name)
    {
        return add(name, AE_IFIFO, [](archive_entry*) {});
    }

private:
    template <class Describe>
    TarFile& add(const std::string& name, unsigned type, Describe&& describe)
    {
        const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                                  archive_entry_free);
        archive_entry_set_pathname(entry.get(), name.c_str());
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_filetype(entry.get(), type);
        describe(entry.get());
        EXPECT_EQ(archive_write_header(_archive.get(), entry.get()), ARCHIVE_OK) << name;
        return *this;
    }

    std::unique_ptr<archive, decltype(&archive_write_free)> _archive{archive_write_new(), archive_write_free};
};

} // namespace K7Test
