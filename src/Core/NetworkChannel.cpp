// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Owned socket of one kind.
#include "Core/NetworkChannel.h"

#include <cerrno>

#include <net/if.h>
#include <sys/socket.h>

namespace Kivo {

NetworkChannel::~NetworkChannel() { close(false); }

bool NetworkChannel::open(int family)
{
    close(false);
    _fd = socket(family, _socketType | SOCK_CLOEXEC, 0);
    if (isOpen() && !_interfaceName.isEmpty() && !bindToInterface())
        close(false);
    return isOpen();
}

bool NetworkChannel::bindToInterface() const
{
    const std::string name = _interfaceName.to_string();
    // The kernel would cut such a name and might find another interface.
    if (name.size() >= IFNAMSIZ || name.find('\0') != name.npos) {
        errno = ENODEV;
        return false;
    }
    return setsockopt(_fd, SOL_SOCKET, SO_BINDTODEVICE, name.c_str(), static_cast<socklen_t>(name.size() + 1)) == 0;
}

void NetworkChannel::close(bool shutDown)
{
    const int before = errno;
    if (shutDown && isOpen())
        shutdown(_fd, SHUT_RDWR);
    errno = before;
    SocketApiWrapper::closeSocket(_fd);
    _fd = SocketApiWrapper::INVALID_FD;
}

} // namespace Kivo
