// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Owned socket of one kind.
#include "Core/NetworkChannel.h"

#include "Base/UniqueFd_p.h"

#include <utility>

#include <net/if.h>
#include <sys/socket.h>

namespace Kivo {

NetworkChannel::~NetworkChannel() { close(false); }

bool NetworkChannel::open(int family)
{
    close(false);
    UniqueFd opened(socket(family, _socketType | SOCK_CLOEXEC, 0));
    if (!opened || (!_interfaceName.isEmpty() && !bindToInterface(opened.get())))
        return false;
    _fd = opened.release();
    return true;
}

bool NetworkChannel::bindToInterface(int fd) const
{
    const std::string name = _interfaceName.to_string();
    // The kernel would cut such a name and might find another interface.
    if (name.size() >= IFNAMSIZ || name.find('\0') != name.npos) {
        errno = ENODEV;
        return false;
    }
    return setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, name.c_str(), static_cast<socklen_t>(name.size() + 1)) == 0;
}

void NetworkChannel::close(bool shutDown)
{
    const UniqueFd closed(std::exchange(_fd, SocketApiWrapper::INVALID_FD));
    const int before = errno;
    if (shutDown && closed)
        shutdown(closed.get(), SHUT_RDWR);
    errno = before;
}

} // namespace Kivo
