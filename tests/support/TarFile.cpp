// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Tar archives with whatever a test wants in them.
#include "support/TarFile.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <archive.h>
#include <archive_entry.h>

namespace K7Test {

namespace {

void add(archive* archive, const std::string& name, const std::function<void(archive_entry*)>& describe)
{
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_pathname(entry.get(), name.c_str());
    archive_entry_set_perm(entry.get(), 0644);
    describe(entry.get());
    EXPECT_EQ(archive_write_header(archive, entry.get()), ARCHIVE_OK) << archive_error_string(archive);
}

} // namespace

TarFile::TarFile(const std::string& path) : _archive(archive_write_new())
{
    archive_write_set_format_gnutar(_archive);
    archive_write_add_filter_gzip(_archive);
    EXPECT_EQ(archive_write_open_filename(_archive, path.c_str()), ARCHIVE_OK) << path;
}

TarFile::~TarFile() { archive_write_free(_archive); }

TarFile& TarFile::file(const std::string& name, const std::string& contents)
{
    add(_archive, name, [&](archive_entry* entry) {
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, static_cast<la_int64_t>(contents.size()));
    });
    archive_write_data(_archive, contents.data(), contents.size());
    return *this;
}

TarFile& TarFile::link(const std::string& name, const std::string& target)
{
    add(_archive, name, [&](archive_entry* entry) {
        archive_entry_set_filetype(entry, AE_IFLNK);
        archive_entry_set_symlink(entry, target.c_str());
    });
    return *this;
}

TarFile& TarFile::hardLink(const std::string& name, const std::string& target)
{
    add(_archive, name, [&](archive_entry* entry) {
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_hardlink(entry, target.c_str());
    });
    return *this;
}

TarFile& TarFile::fifo(const std::string& name)
{
    add(_archive, name, [](archive_entry* entry) { archive_entry_set_filetype(entry, AE_IFIFO); });
    return *this;
}

TarFile& TarFile::zeros(const std::string& name, std::size_t size) { return file(name, std::string(size, '\0')); }

} // namespace K7Test
