// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A socket on loopback.
#pragma once

#include "Core/SocketApiWrapper.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace Kivo {

/// A socket bound to a loopback address, at a port of the kernel's choice.
struct BoundSocket {
    BoundSocket(const wchar_t* host, int type)
    {
        const SocketAddress wanted(host);
        sockaddr_storage bound{};
        socklen_t size = sizeof(bound);
        fd = socket(wanted.family(), type | SOCK_CLOEXEC, 0);
        if (bind(fd, static_cast<const sockaddr*>(wanted.data()), wanted.size()) == 0 &&
            getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &size) == 0)
            address.assign(&bound, size);
    }

    ~BoundSocket() { SocketApiWrapper::closeSocket(fd); }

    int fd;
    SocketAddress address;
};

} // namespace Kivo
