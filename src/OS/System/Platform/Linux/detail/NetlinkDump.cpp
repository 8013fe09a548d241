// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Asks the kernel's routing socket for whole lists.
#include "Base/UniqueFd_p.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/NetlinkDump_p.h"
#include "OS/System/Platform/Linux/detail/NetlinkParser_p.h"

#include <cstring>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace Kivo {

namespace {

constexpr std::size_t LARGEST_DATAGRAM = 32768; // the kernel fills what it is given room for, up to this

/// A list that changes while it is read may have gaps; one that always does is taken as it comes.
constexpr int DUMP_ATTEMPTS = 8;

struct Request {
    nlmsghdr header{};
    ifinfomsg message{};
    rtattr attribute{};
    uint32 filter = 0;
};

void send(const UniqueFd& socket, uint16 type, uint8 family)
{
    Request request;
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = type;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.message.ifi_family = family;
    request.attribute.rta_type = IFLA_EXT_MASK;
    request.attribute.rta_len = RTA_LENGTH(sizeof request.filter);
    request.filter = RTEXT_FILTER_SKIP_STATS; // summing them up is most of the kernel's work
    const auto sent = retried([&] { return ::send(socket.get(), &request, sizeof request, 0); });
    requireCall(sent == static_cast<ssize_t>(sizeof request), "send() to the routing socket failed");
}

[[noreturn]] void raiseRefusal(std::string_view payload)
{
    nlmsgerr error{};
    std::memcpy(&error, payload.data(), std::min(payload.size(), sizeof error));
    throw Reason{"the kernel refused the list", -error.error};
}

/// Add the datagrams of one answer to @p messages. @return whether the list stayed the same meanwhile
bool receive(const UniqueFd& socket, std::string* messages)
{
    bool isConsistent = true;
    for (;;) {
        const std::size_t begin = messages->size();
        messages->resize(begin + LARGEST_DATAGRAM);
        const auto size =
            retried([&] { return ::recv(socket.get(), messages->data() + begin, LARGEST_DATAGRAM, MSG_TRUNC); });
        requireCall(size >= 0, "recv() from the routing socket failed");
        require(size != 0 && static_cast<std::size_t>(size) <= LARGEST_DATAGRAM, "the kernel's answer is cut");
        messages->resize(begin + static_cast<std::size_t>(size));
        NetlinkMessages datagram(std::string_view(*messages).substr(begin));
        for (NetlinkMessage message; datagram.next(&message);) {
            if (message.type == NLMSG_ERROR)
                raiseRefusal(message.payload);
            isConsistent &= (message.flags & NLM_F_DUMP_INTR) == 0;
            if (message.type == NLMSG_DONE)
                return isConsistent;
        }
    }
}

} // namespace

std::string netlinkDump(uint16 type, uint8 family)
{
    const UniqueFd socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    requireCall(static_cast<bool>(socket), "can't open the routing socket");
    std::string messages;
    for (int attempt = 0; attempt < DUMP_ATTEMPTS; ++attempt) {
        messages.clear();
        send(socket, type, family);
        if (receive(socket, &messages))
            break;
    }
    return messages;
}

} // namespace Kivo
