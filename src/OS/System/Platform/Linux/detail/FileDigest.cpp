// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Digests of files.
#include "Base/UniqueFd_p.h"
#include "Foundation/J3Thread.h"
#include "OS/System/Platform/Linux/detail/FileDigest_p.h"

#include <cstring>

#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/stat.h>

namespace Kivo {

namespace {

constexpr std::size_t READ_SIZE = 4096;
constexpr std::size_t BUFFER_SIZE = READ_SIZE + 8;
constexpr unsigned int READS_BETWEEN_PAUSES = 256;
constexpr uint32 PAUSE_MS = 10;

class Digest {
public:
    explicit Digest(DigestKind kind) : _context(newContext(), ::EVP_MD_CTX_free)
    {
        const EVP_MD* const method = kind == DigestKind::MD5 ? ::EVP_md5() : ::EVP_sha256();
        require(_context && ::EVP_DigestInit_ex(_context.get(), method, nullptr) == 1, "the digest is not available");
    }

    void update(const void* bytes, std::size_t size)
    {
        require(::EVP_DigestUpdate(_context.get(), bytes, size) == 1, "the digest failed");
    }

    std::string finish()
    {
        unsigned char bytes[EVP_MAX_MD_SIZE];
        unsigned int size = 0;
        require(::EVP_DigestFinal_ex(_context.get(), bytes, &size) == 1, "the digest failed");
        constexpr const char* DIGITS = "0123456789abcdef";
        std::string text;
        for (unsigned int i = 0; i < size; ++i) {
            text += DIGITS[bytes[i] >> 4U];
            text += DIGITS[bytes[i] & 15U];
        }
        return text;
    }

private:
    /// The libraries are in use until the very end of the process: OpenSSL must not be cleaned up before.
    static EVP_MD_CTX* newContext()
    {
        ::OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
        return ::EVP_MD_CTX_new();
    }

    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> _context;
};

} // namespace

std::string digestOfFile(DigestKind kind, const char* path, const ProgressReport& report)
{
    Digest digest(kind);
    constexpr int FLAGS = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const UniqueFd file(retried([path] { return ::open(path, FLAGS); }));
    struct stat status {};
    requireCall(static_cast<bool>(file), "can't open the file", path);
    requireCall(::fstat(file.get(), &status) == 0, "fstat() error", path);
    require(S_ISREG(status.st_mode) || S_ISBLK(status.st_mode), "is not a regular file or a block device", path);
    char buffer[BUFFER_SIZE];
    uint64 done = 0;
    for (unsigned int reads = 1;; ++reads) {
        std::memset(buffer, 0, sizeof buffer);
        const ssize_t count = retried([&] { return ::read(file.get(), buffer, READ_SIZE); });
        requireCall(count >= 0, "read() error", path);
        if (count == 0)
            return digest.finish();
        digest.update(buffer, static_cast<std::size_t>(count));
        done += static_cast<uint64>(count);
        if (reads % READS_BETWEEN_PAUSES == 0) {
            report.tell(done, static_cast<uint64>(status.st_size), path);
            J3Thread::sleep(PAUSE_MS);
        }
    }
}

} // namespace Kivo
