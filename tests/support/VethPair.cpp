// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Two connected Ethernet devices for a test in the sandbox, and what can be set on a device there.
#include "support/VethPair.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

namespace K7Test {

namespace {

/// One rtnetlink request: its header, the message's own, and attributes, which may hold others.
class Request {
public:
    template <class Header>
    Request(unsigned short type, int flags, const Header& header) : _bytes(sizeof(nlmsghdr))
    {
        _flags = static_cast<unsigned short>(flags | NLM_F_REQUEST | NLM_F_ACK);
        _type = type;
        append(&header, sizeof header);
    }

    Request& attribute(unsigned short type, std::string_view contents)
    {
        const rtattr head{static_cast<unsigned short>(sizeof(rtattr) + contents.size()), type};
        append(&head, sizeof head);
        append(contents.data(), contents.size());
        return *this;
    }

    Request& attribute(unsigned short type, unsigned int number)
    {
        return attribute(type, {reinterpret_cast<const char*>(&number), sizeof number});
    }

    Request& begin(unsigned short type)
    {
        _open.push_back(_bytes.size());
        return attribute(type, "");
    }

    template <class Header>
    Request& header(const Header& contents)
    {
        append(&contents, sizeof contents);
        return *this;
    }

    Request& end()
    {
        const auto length = static_cast<unsigned short>(_bytes.size() - _open.back());
        std::memcpy(_bytes.data() + _open.back(), &length, sizeof length);
        _open.pop_back();
        return *this;
    }

    /// Give it to the kernel. @return the errno of its answer
    int send()
    {
        const nlmsghdr head{static_cast<unsigned int>(_bytes.size()), _type, _flags, 1, 0};
        std::memcpy(_bytes.data(), &head, sizeof head);

        struct {
            nlmsghdr head;
            nlmsgerr error;
            char quoted[4096];
        } answer{};

        const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
        const bool answered =
            ::send(fd, _bytes.data(), _bytes.size(), 0) > 0 && ::recv(fd, &answer, sizeof answer, 0) > 0;
        const int error = answered ? -answer.error.error : errno;
        ::close(fd);
        return error;
    }

private:
    void append(const void* bytes, std::size_t size)
    {
        const auto* const begin = static_cast<const char*>(bytes);
        _bytes.insert(_bytes.end(), begin, begin + size);
        _bytes.resize(NLMSG_ALIGN(_bytes.size()));
    }

    std::vector<char> _bytes;
    std::vector<std::size_t> _open;
    unsigned short _type;
    unsigned short _flags;
};

std::string_view withEnd(const std::string& text) { return {text.c_str(), text.size() + 1}; }

/// An address in network byte order, of the family that its text is of.
std::string addressBytes(const std::string& text, unsigned char* family)
{
    char bytes[sizeof(in6_addr)];
    *family = text.find(':') == std::string::npos ? AF_INET : AF_INET6;
    EXPECT_EQ(::inet_pton(*family, text.c_str(), bytes), 1) << text;
    return {bytes, *family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr)};
}

int changeAddress(unsigned short type, const std::string& name, const std::string& address, unsigned char prefixLength)
{
    ifaddrmsg header{};
    const std::string bytes = addressBytes(address, &header.ifa_family);
    header.ifa_prefixlen = prefixLength;
    header.ifa_flags = IFA_F_NODAD;
    header.ifa_index = ::if_nametoindex(name.c_str());
    return Request(type, type == RTM_NEWADDR ? NLM_F_CREATE : 0, header)
        .attribute(IFA_LOCAL, bytes)
        .attribute(IFA_ADDRESS, bytes)
        .send();
}

} // namespace

VethPair::VethPair(const std::string& name, const std::string& peer) : _name(name)
{
    _problem = Request(RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL, ifinfomsg{})
                   .attribute(IFLA_IFNAME, withEnd(name))
                   .begin(IFLA_LINKINFO)
                   .attribute(IFLA_INFO_KIND, "veth")
                   .begin(IFLA_INFO_DATA)
                   .begin(VETH_INFO_PEER)
                   .header(ifinfomsg{})
                   .attribute(IFLA_IFNAME, withEnd(peer))
                   .end()
                   .end()
                   .end()
                   .send();
    if (_problem == 0)
        _problem = setDeviceUp(name, true);
    if (_problem == 0)
        _problem = setDeviceUp(peer, true);
}

VethPair::~VethPair()
{
    ifinfomsg header{};
    header.ifi_index = static_cast<int>(::if_nametoindex(_name.c_str()));
    EXPECT_EQ(Request(RTM_DELLINK, 0, header).send(), 0) << _name;
}

int setDeviceUp(const std::string& name, bool up)
{
    ifinfomsg header{};
    header.ifi_index = static_cast<int>(::if_nametoindex(name.c_str()));
    header.ifi_flags = up ? IFF_UP : 0;
    header.ifi_change = IFF_UP;
    return Request(RTM_NEWLINK, 0, header).send();
}

int addAddress(const std::string& name, const std::string& address, unsigned char prefixLength)
{
    return changeAddress(RTM_NEWADDR, name, address, prefixLength);
}

int removeAddress(const std::string& name, const std::string& address, unsigned char prefixLength)
{
    return changeAddress(RTM_DELADDR, name, address, prefixLength);
}

int addDefaultRoute(const std::string& name, const std::string& gateway)
{
    rtmsg header{};
    const std::string bytes = addressBytes(gateway, &header.rtm_family);
    header.rtm_table = RT_TABLE_MAIN;
    header.rtm_protocol = RTPROT_STATIC;
    header.rtm_type = RTN_UNICAST;
    return Request(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_EXCL, header)
        .attribute(RTA_GATEWAY, bytes)
        .attribute(RTA_OIF, ::if_nametoindex(name.c_str()))
        .send();
}

CoveredFile::CoveredFile(const std::string& path, const std::string& contents)
    : _path(std::filesystem::canonical(path).string())
{
    std::string cover = (std::filesystem::temp_directory_path() / "k7-cover-XXXXXX").string();
    const int fd = ::mkstemp(cover.data());
    EXPECT_EQ(::write(fd, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
    ::close(fd);
    EXPECT_EQ(::mount(cover.c_str(), _path.c_str(), nullptr, MS_BIND, nullptr), 0) << _path << std::strerror(errno);
    ::unlink(cover.c_str());
}

CoveredFile::~CoveredFile() { EXPECT_EQ(::umount2(_path.c_str(), MNT_DETACH), 0) << _path; }

} // namespace K7Test
