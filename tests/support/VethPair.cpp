// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Two connected Ethernet devices for a test in the sandbox, and what can be changed around them there.
#include "support/VethPair.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include <stdlib.h>
#include <sys/mount.h>
#include <unistd.h>

namespace K7Test {

bool ip(const std::string& commands)
{
    FILE* const tool = ::popen("ip -batch -", "w");
    return tool && std::fputs(commands.c_str(), tool) >= 0 && ::pclose(tool) == 0;
}

void withoutLinkLocalAddresses()
{
    constexpr const char* MODE_NONE = "1";
    std::ofstream file("/proc/sys/net/ipv6/conf/default/addr_gen_mode");
    EXPECT_TRUE(file << MODE_NONE << std::flush);
}

VethPair::VethPair(const std::string& name, const std::string& peer) : _name(name)
{
    EXPECT_TRUE(ip("link add " + name + " type veth peer name " + peer + "\nlink set " + name +
                   " addrgenmode none up\nlink set " + peer + " addrgenmode none up"));
}

VethPair::~VethPair() { EXPECT_TRUE(ip("link del " + _name)); }

CoveredFile::CoveredFile(const std::string& path, const std::string& contents)
    : _path(std::filesystem::canonical(path).string())
{
    std::string cover = (std::filesystem::temp_directory_path() / "k7-cover-XXXXXX").string();
    const int fd = ::mkstemp(cover.data());
    EXPECT_EQ(::write(fd, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
    ::close(fd);
    EXPECT_EQ(::mount(cover.c_str(), _path.c_str(), nullptr, MS_BIND, nullptr), 0) << _path;
    ::unlink(cover.c_str());
}

CoveredFile::~CoveredFile() { EXPECT_EQ(::umount2(_path.c_str(), MNT_DETACH), 0) << _path; }

} // namespace K7Test
