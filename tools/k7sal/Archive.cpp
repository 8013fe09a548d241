// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trees of captured files as tar archives.
#include "Archive.h"

#include "FileTools.h"
#include "LateLibrary.h"

#include "Base/UniqueFd_p.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/resource.h>

namespace K7Tool {

namespace fs = std::filesystem;

namespace {

// libarchive, and what it needs in turn, takes longer to load than most commands take to run.
#define K7_LATE(name)                                                                                                  \
    constinit const LateFunction<decltype(::name)> name(K7_LIBARCHIVE, #name) // NOLINT(cert-err58-cpp)
K7_LATE(archive_entry_clear);
K7_LATE(archive_entry_filetype);
K7_LATE(archive_entry_free);
K7_LATE(archive_entry_hardlink);
K7_LATE(archive_entry_new);
K7_LATE(archive_entry_pathname);
K7_LATE(archive_entry_set_filetype);
K7_LATE(archive_entry_set_pathname);
K7_LATE(archive_entry_set_perm);
K7_LATE(archive_entry_set_size);
K7_LATE(archive_entry_set_symlink);
K7_LATE(archive_entry_size);
K7_LATE(archive_entry_size_is_set);
K7_LATE(archive_entry_symlink);
K7_LATE(archive_error_string);
K7_LATE(archive_read_data);
K7_LATE(archive_read_free);
K7_LATE(archive_read_new);
K7_LATE(archive_read_next_header);
K7_LATE(archive_read_open_filename);
K7_LATE(archive_write_add_filter_gzip);
K7_LATE(archive_write_close);
K7_LATE(archive_write_data);
K7_LATE(archive_write_free);
K7_LATE(archive_write_header);
K7_LATE(archive_write_new);
K7_LATE(archive_write_open_fd);
K7_LATE(archive_write_set_format_pax_restricted);
K7_LATE(archive_read_support_filter_gzip);
K7_LATE(archive_read_support_filter_xz);
K7_LATE(archive_read_support_filter_zstd);
K7_LATE(archive_read_support_format_tar);
#undef K7_LATE

/// Frees what an archive is read or written by.
template <const auto& Free>
struct Freed {
    void operator()(auto* object) const { Free(object); }
};

using Reader = std::unique_ptr<archive, Freed<archive_read_free>>;
using Writer = std::unique_ptr<archive, Freed<archive_write_free>>;
using Entry = std::unique_ptr<archive_entry, Freed<archive_entry_free>>;

[[noreturn]] void refuse(const std::string& name, const char* why)
{
    throw std::runtime_error("refused: \"" + name + "\" " + why);
}

void check(archive* archive, int result)
{
    if (result < ARCHIVE_WARN)
        throw std::runtime_error(archive_error_string(archive) ? archive_error_string(archive) : "damaged");
}

/// Bounds what a decoder may allocate while an archive is read: an xz archive may ask for a dictionary of 1 GiB.
class MemoryBound {
public:
    MemoryBound()
    {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        constexpr rlim_t ROOM = 80U << 20U;
        _bounded = ::getrlimit(RLIMIT_DATA, &_before) == 0;
        const rlimit bound{std::min<rlim_t>(ROOM, _before.rlim_cur), _before.rlim_max};
        _bounded = _bounded && ::setrlimit(RLIMIT_DATA, &bound) == 0;
#endif
    }
    ~MemoryBound()
    {
        if (_bounded)
            ::setrlimit(RLIMIT_DATA, &_before);
    }
    MemoryBound(const MemoryBound&) = delete;
    MemoryBound& operator=(const MemoryBound&) = delete;

private:
    rlimit _before{};
    bool _bounded = false;
};

/// Makes the entries of one archive below a directory. Links are made last, so that nothing is written through one.
class Unpacking {
public:
    explicit Unpacking(fs::path directory) : _directory(std::move(directory)) {}

    void add(archive* archive, archive_entry* entry)
    {
        const char* const raw = archive_entry_pathname(entry);
        const std::string name = raw ? raw : "";
        const fs::path path = inside(name);
        count(name);
        if (archive_entry_hardlink(entry))
            refuse(name, "is a hard link");
        switch (archive_entry_filetype(entry)) {
        case AE_IFDIR:
            makeDirectories(path, name);
            break;
        case AE_IFREG:
            makeDirectories(path.parent_path(), name);
            extract(archive, entry, path, name);
            break;
        case AE_IFLNK:
            addLink(path, name, archive_entry_symlink(entry));
            break;
        default:
            refuse(name, "is neither a file, a directory nor a symbolic link");
        }
    }

    void finish()
    {
        if (_entries == 0)
            throw std::runtime_error("is empty, or not a tar archive");
        for (const auto& [path, target] : _links) {
            makeDirectories(path.parent_path(), path.string());
            fs::create_symlink(target, _directory / path);
        }
    }

private:
    /// An entry's path below the directory.
    static fs::path inside(const std::string& name)
    {
        fs::path path;
        for (const fs::path& part : fs::path(name)) {
            if (part.is_absolute())
                refuse(name, "is an absolute name");
            if (part == "..")
                refuse(name, "leads out of the archive");
            if (part != "." && !part.empty())
                path /= part;
        }
        return path;
    }

    void count(const std::string& name)
    {
        if (++_entries > TreeLimits::ENTRIES)
            refuse(name, "is one entry too many");
    }

    void takeBytes(std::uint64_t size, const std::string& name)
    {
        if (size > TreeLimits::TOTAL_BYTES - _bytes)
            refuse(name, "exceeds 256 MiB together with what precedes it");
        _bytes += size;
    }

    void makeDirectories(const fs::path& path, const std::string& name)
    {
        if (path == _lastDirectory)
            return;
        fs::path whole = _directory;
        for (const fs::path& part : path) {
            whole /= part;
            if (fs::create_directory(whole))
                count(name);
        }
        _lastDirectory = path;
    }

    void extract(archive* archive, archive_entry* entry, const fs::path& path, const std::string& name)
    {
        if (path.empty())
            refuse(name, "has no name");
        if (archive_entry_size_is_set(entry) &&
            static_cast<std::uint64_t>(archive_entry_size(entry)) > TreeLimits::FILE_BYTES)
            refuse(name, "is larger than 16 MiB");
        FileWriter file(_directory / path);
        std::uint64_t size = 0;
        for (la_ssize_t got = 0; (got = archive_read_data(archive, _buffer.data(), _buffer.size())) != 0;) {
            check(archive, got < 0 ? static_cast<int>(got) : ARCHIVE_OK);
            size += static_cast<std::uint64_t>(got);
            if (size > TreeLimits::FILE_BYTES)
                refuse(name, "is larger than 16 MiB");
            takeBytes(static_cast<std::uint64_t>(got), name);
            file.write({_buffer.data(), static_cast<std::size_t>(got)});
        }
        file.close();
    }

    void addLink(const fs::path& path, const std::string& name, const char* target)
    {
        constexpr std::size_t LONGEST = 4095;
        const std::string text = target ? target : "";
        if (path.empty() || text.empty() || text.size() > LONGEST)
            refuse(name, "is not a possible link");
        _linkBytes += text.size() + name.size();
        if (_linkBytes > TreeLimits::FILE_BYTES)
            refuse(name, "is one link too many");
        if (fs::path(text).is_relative()) {
            auto depth = std::distance(path.begin(), path.end()) - 1;
            for (const fs::path& part : fs::path(text)) {
                depth += part == ".." ? -1 : part == "." || part.empty() ? 0 : 1;
                if (depth < 0)
                    refuse(name, "is a link that leads out of the archive");
            }
        }
        _links.emplace_back(path, text);
    }

    static constexpr std::size_t BUFFER_SIZE = 65536;

    std::vector<char> _buffer = std::vector<char>(BUFFER_SIZE);
    fs::path _directory;
    fs::path _lastDirectory;
    std::vector<std::pair<fs::path, std::string>> _links;
    std::size_t _entries = 0;
    std::size_t _linkBytes = 0;
    std::uint64_t _bytes = 0;
};

Reader openArchive(const std::string& name)
{
    Reader reader(archive_read_new());
    if (!reader)
        throw std::bad_alloc();
    for (const auto support : {archive_read_support_format_tar, archive_read_support_filter_gzip,
                               archive_read_support_filter_xz, archive_read_support_filter_zstd})
        check(reader.get(), support(reader.get()));
    constexpr std::size_t BLOCK = 65536;
    check(reader.get(), archive_read_open_filename(reader.get(), name.c_str(), BLOCK));
    return reader;
}

/// Writes the entries of one tree.
class Packing {
public:
    Packing(fs::path directory, std::string top, const fs::path& archive)
        : _directory(std::move(directory)), _top(std::move(top)), _writer(archive_write_new()),
          _entry(archive_entry_new()),
          _fd(Kivo::retried([&] { return ::open(archive.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); }))
    {
        if (!_writer || !_entry)
            throw std::bad_alloc();
        if (!_fd)
            throw std::system_error(errno, std::generic_category(), "cannot make " + archive.string());
        check(_writer.get(), archive_write_set_format_pax_restricted(_writer.get()));
        check(_writer.get(), archive_write_add_filter_gzip(_writer.get()));
        check(_writer.get(), archive_write_open_fd(_writer.get(), _fd.get()));
    }

    void add(const fs::directory_entry& found)
    {
        constexpr int DIRECTORY_MODE = 0755;
        constexpr int FILE_MODE = 0644;
        archive_entry* const entry = archive_entry_clear(_entry.get());
        archive_entry_set_pathname(entry, (_top / found.path().lexically_relative(_directory)).c_str());
        std::string contents;
        if (found.is_symlink()) {
            archive_entry_set_filetype(entry, AE_IFLNK);
            archive_entry_set_symlink(entry, fs::read_symlink(found.path()).c_str());
        } else if (found.is_directory()) {
            archive_entry_set_filetype(entry, AE_IFDIR);
            archive_entry_set_perm(entry, DIRECTORY_MODE);
        } else {
            contents = contentsOf(found.path());
            archive_entry_set_filetype(entry, AE_IFREG);
            archive_entry_set_perm(entry, FILE_MODE);
            archive_entry_set_size(entry, static_cast<la_int64_t>(contents.size()));
        }
        check(_writer.get(), archive_write_header(_writer.get(), entry));
        if (!contents.empty() && archive_write_data(_writer.get(), contents.data(), contents.size()) < 0)
            check(_writer.get(), ARCHIVE_FATAL);
    }

    void finish()
    {
        check(_writer.get(), archive_write_close(_writer.get()));
        if (::fsync(_fd.get()) != 0)
            throw std::system_error(errno, std::generic_category(), "cannot write the archive");
    }

private:
    fs::path _directory;
    fs::path _top;
    Writer _writer;
    Entry _entry;
    Kivo::UniqueFd _fd;
};

} // namespace

bool isArchiveName(const std::string& name) { return name.ends_with(".tar.gz") || name.ends_with(".tgz"); }

void unpackArchive(const std::string& archive, const fs::path& directory)
{
    const MemoryBound bound;
    const Reader reader = openArchive(archive);
    Unpacking unpacking(directory);
    archive_entry* entry = nullptr;
    for (int result = 0; (result = archive_read_next_header(reader.get(), &entry)) != ARCHIVE_EOF;) {
        check(reader.get(), result);
        unpacking.add(reader.get(), entry);
    }
    unpacking.finish();
}

void packArchive(const fs::path& directory, const std::string& top, const fs::path& archive)
{
    Packing packing(directory, top, archive);
    std::vector<fs::directory_entry> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory))
        entries.push_back(entry);
    std::sort(entries.begin(), entries.end());
    for (const fs::directory_entry& entry : entries)
        packing.add(entry);
    packing.finish();
}

} // namespace K7Tool
