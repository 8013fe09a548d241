// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Raw socket calls.
#include "Core/SocketApiWrapper.h"

#include <cerrno>

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

} // namespace

int SocketApiWrapper::createRawSocket(int protocol)
{
    return protocol == RAW_ICMP ? socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP) : failWith(EPROTONOSUPPORT);
}

void SocketApiWrapper::closeSocket(int fd)
{
    if (fd == INVALID_FD)
        return;
    const int before = errno;
    close(fd);
    errno = before;
}

int SocketApiWrapper::sendTo(int fd, const char* data, int length, const SocketAddress& address)
{
    if (!data || length < 0 || !address.isValid())
        return failWith(EINVAL);
    ssize_t sent;
    do
        sent = sendto(fd, data, static_cast<size_t>(length), MSG_NOSIGNAL, static_cast<const sockaddr*>(address.data()),
                      address.size());
    while (sent < 0 && errno == EINTR);
    return static_cast<int>(sent);
}

int SocketApiWrapper::recvFrom(int fd, char* buffer, int capacity, SocketAddress& from, bool wait)
{
    if (!buffer || capacity < 0)
        return failWith(EINVAL);
    sockaddr_storage sender{};
    socklen_t size;
    ssize_t received;
    do {
        size = sizeof(sender);
        received = recvfrom(fd, buffer, static_cast<size_t>(capacity), wait ? 0 : MSG_DONTWAIT,
                            reinterpret_cast<sockaddr*>(&sender), &size);
    } while (received < 0 && errno == EINTR);
    if (received >= 0)
        from.assign(&sender, size);
    return static_cast<int>(received);
}

} // namespace Kivo
