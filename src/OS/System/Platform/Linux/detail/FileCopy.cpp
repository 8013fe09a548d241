// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Copies of files.
#include "Base/UniqueFd_p.h"
#include "Foundation/J3Thread.h"
#include "OS/System/Platform/Linux/detail/FileCopy_p.h"

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

namespace Kivo {

namespace {

constexpr std::size_t CHUNK_SIZE = 8192;
constexpr int READ_RETRIES = 5;
constexpr int WRITE_ATTEMPTS = 5;
constexpr uint32 WAIT_MS = 20;
constexpr uint64 REPORT_INTERVAL = 1U << 20U;

struct Source {
    explicit Source(const char* path) : fd(retried([path] { return ::open(path, FLAGS); }))
    {
        requireCall(static_cast<bool>(fd), "can't open src file", path);
        requireCall(::fstat(fd.get(), &status) == 0, "fstat() error", path);
        require(S_ISREG(status.st_mode), "is not a regular file", path);
    }

    [[nodiscard]] uint64 size() const { return static_cast<uint64>(status.st_size); }

    static constexpr int FLAGS = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    UniqueFd fd;
    struct stat status {};
};

/// The file to be written, emptied; flushed when it goes.
class Destination {
public:
    Destination(const char* path, const Source& source)
        : _fd(retried([&] { return ::open(path, FLAGS, source.status.st_mode & ALL_PERMISSIONS); })), _path(path)
    {
        struct stat status {};
        requireCall(_fd && ::fstat(_fd.get(), &status) == 0, "can't open dest file", path);
        const bool same = status.st_dev == source.status.st_dev && status.st_ino == source.status.st_ino;
        require(!same, "source and destination are the same file", path);
        const bool emptied = !S_ISREG(status.st_mode) || retried([&] { return ::ftruncate(_fd.get(), 0); }) == 0;
        requireCall(emptied, "can't open dest file", path);
    }

    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    ~Destination()
    {
        if (_fd)
            static_cast<void>(sync());
    }

    /// Raises a reason when the medium does not take it; what is no medium need not.
    void flush()
    {
        requireCall(sync() == 0 || errno == EINVAL, "fsync() failed", _path);
        const UniqueFd closed(_fd.release());
    }

    void write(const char* bytes, std::size_t size)
    {
        for (int attempt = 0; attempt < WRITE_ATTEMPTS && size != 0; ++attempt) {
            const ssize_t count = retried([&] { return ::write(_fd.get(), bytes, size); });
            requireCall(count >= 0, "write() error", _path);
            if (count == 0)
                J3Thread::sleep(WAIT_MS);
            bytes += count;
            size -= static_cast<std::size_t>(count);
        }
        require(size == 0, "write() timed-out!", _path);
    }

private:
    int sync()
    {
        return retried([this] { return ::fsync(_fd.get()); });
    }

    // Not emptied by opening it: it may turn out to be the source.
    static constexpr int FLAGS = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    static constexpr mode_t ALL_PERMISSIONS = 07777;
    UniqueFd _fd;
    const char* _path;
};

} // namespace

void copyContents(const char* destPath, const char* srcPath, const ProgressReport& report)
{
    const Source source(srcPath);
    Destination destination(destPath, source);
    char buffer[CHUNK_SIZE];
    int readRetries = READ_RETRIES;
    uint64 written = 0;
    while (written < source.size()) {
        std::memset(buffer, 0, sizeof buffer);
        const ssize_t count = retried([&] { return ::read(source.fd.get(), buffer, sizeof buffer); });
        requireCall(count >= 0, "read() error", srcPath);
        if (count == 0) {
            J3Thread::sleep(WAIT_MS);
            require(readRetries-- != 0, "read() timed-out!", srcPath);
            continue;
        }
        destination.write(buffer, static_cast<std::size_t>(count));
        written += static_cast<uint64>(count);
        require(written <= source.size(), "write() failed", destPath);
        if (written % REPORT_INTERVAL < static_cast<uint64>(count))
            report.tell(written, source.size(), srcPath);
    }
    destination.flush();
}

} // namespace Kivo
