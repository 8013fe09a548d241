// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Raw socket calls.
#include "Core/SocketApiWrapper.h"

#include "Base/UniqueFd_p.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Kivo {
namespace {

int failWith(int errorCode)
{
    errno = errorCode;
    return -1;
}

int64 stampOf(msghdr& message)
{
    const cmsghdr* const header = CMSG_FIRSTHDR(&message); // stamps are all that is asked for
    if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_TIMESTAMPNS)
        return 0;
    timespec stamp;
    std::memcpy(&stamp, CMSG_DATA(header), sizeof(stamp));
    return stamp.tv_sec * 1'000'000'000LL + stamp.tv_nsec;
}

} // namespace

int SocketApiWrapper::createRawSocket(int protocol)
{
    return protocol == RAW_ICMP ? socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP) : failWith(EPROTONOSUPPORT);
}

void SocketApiWrapper::closeSocket(int fd) { const UniqueFd closed(fd); }

int SocketApiWrapper::sendTo(int fd, const char* data, int length, const SocketAddress& address)
{
    if (!data || length < 0 || !address.isValid())
        return failWith(EINVAL);
    return static_cast<int>(retried([&] {
        return sendto(fd, data, static_cast<size_t>(length), MSG_NOSIGNAL, static_cast<const sockaddr*>(address.data()),
                      address.size());
    }));
}

int SocketApiWrapper::recvFrom(int fd, char* buffer, int capacity, SocketAddress& from, bool wait, int64* stamp)
{
    if (!buffer || capacity < 0)
        return failWith(EINVAL);
    sockaddr_storage sender{};
    iovec room{buffer, static_cast<size_t>(capacity)};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
    msghdr message{};
    const ssize_t received = retried([&] {
        message.msg_name = &sender;
        message.msg_namelen = sizeof(sender);
        message.msg_iov = &room;
        message.msg_iovlen = 1;
        message.msg_control = stamp ? control : nullptr;
        message.msg_controllen = stamp ? sizeof(control) : 0;
        return recvmsg(fd, &message, wait ? 0 : MSG_DONTWAIT);
    });
    if (received < 0)
        return -1;
    from.assign(&sender, message.msg_namelen);
    if (stamp)
        *stamp = stampOf(message);
    return static_cast<int>(received);
}

bool SocketApiWrapper::enableStamps(int fd)
{
    const int on = 1;
    return setsockopt(fd, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof(on)) == 0;
}

} // namespace Kivo
