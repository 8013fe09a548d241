// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How a file is replaced, shown on the resolver file: links, modes, mounts, and media that refuse.
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "OS/System/Network.h"

#include <cerrno>
#include <cstring>

#include <sys/mount.h>
#include <sys/stat.h>

using namespace Kivo;
using namespace K7Test;
namespace fs = std::filesystem;

namespace {

constexpr const char* RESOLVER = "/etc/resolv.conf";
const std::string OLD(600, '#');

/// A tree with an old resolver file, in which mounts can be made.
class FileReplacement : public testing::Test {
protected:
    FileReplacement() { tree.file(RESOLVER, OLD); }

    ~FileReplacement() override
    {
        for (const std::string& target : _mounted)
            EXPECT_EQ(::umount2(target.c_str(), MNT_DETACH), 0);
    }

    void mount(const char* type, const fs::path& source, const char* target, unsigned long flags, const char* data)
    {
        const std::string path = tree.real(target);
        ASSERT_EQ(::mount(source.c_str(), path.c_str(), type, flags, data), 0) << std::strerror(errno);
        if ((flags & MS_REMOUNT) == 0)
            _mounted.push_back(path);
    }

    [[nodiscard]] std::size_t entriesBeside() const
    {
        const fs::directory_iterator entries(tree.real(RESOLVER).parent_path());
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    void expectNew(const char* path) const
    {
        const std::string contents = tree.contents(path);
        EXPECT_TRUE(contents.starts_with("# nameserver not set\n")) << contents;
        EXPECT_TRUE(contents.ends_with("attempts:2\n\n")) << contents;
    }

    void expectRefused(int errorCode) const
    {
        EXPECT_FALSE(K7SystemUtil::Network::writeResolverFile(nullptr));
        EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, errorCode);
        EXPECT_EQ(K7SystemUtil::lastFailure().subject, J3String(RESOLVER));
        EXPECT_EQ(tree.contents(RESOLVER), OLD);
        EXPECT_EQ(entriesBeside(), 1U);
    }

    TemporaryTree tree;

private:
    std::vector<std::string> _mounted;
};

using FileReplacementCaptured = FileReplacement;
using FileReplacementLive = FileReplacement;

} // namespace

TEST_F(FileReplacementCaptured, FollowsLinksWithinTheTreeAndSetsTheMode)
{
    fs::remove(tree.real(RESOLVER));
    tree.link(RESOLVER, "/run/link").link("/run/link", "../../../run/resolv.conf");
    const mode_t mask = ::umask(0077);
    EXPECT_TRUE(K7SystemUtil::Network::writeResolverFile(nullptr)); // made
    EXPECT_TRUE(K7SystemUtil::Network::writeResolverFile(nullptr)); // replaced
    ::umask(mask);
    EXPECT_TRUE(fs::is_symlink(tree.real(RESOLVER)));
    expectNew("/run/resolv.conf");
    struct stat status {};
    ASSERT_EQ(::stat(tree.real("/run/resolv.conf").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
    EXPECT_EQ(entriesBeside(), 1U);
}

TEST_F(FileReplacementCaptured, RefusesWhatIsNotARegularFile)
{
    fs::remove(tree.real(RESOLVER));
    tree.directory(RESOLVER);
    EXPECT_FALSE(K7SystemUtil::Network::writeResolverFile(nullptr));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"is not a regular file");
}

TEST_F(FileReplacementLive, MediumThatIsFullOrReadOnlyKeepsTheOldFile)
{
    K7_REQUIRE_SANDBOX();
    mount("tmpfs", "none", "/etc", 0, "size=4k");
    tree.file(RESOLVER, OLD);
    expectRefused(ENOSPC);
    mount(nullptr, "none", "/etc", MS_REMOUNT | MS_RDONLY, nullptr);
    expectRefused(EROFS);
}

TEST_F(FileReplacementLive, FileThatIsAMountIsWrittenOverAndCut)
{
    K7_REQUIRE_SANDBOX();
    tree.file("/own", std::string(5000, 'x'));
    mount(nullptr, tree.real("/own"), RESOLVER, MS_BIND, nullptr);
    EXPECT_TRUE(K7SystemUtil::Network::writeResolverFile(nullptr));
    expectNew("/own");
    EXPECT_EQ(entriesBeside(), 1U);
}
