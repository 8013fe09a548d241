// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Requests to the kernel about one named network interface.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/UniqueFd_p.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

#include <cstring>

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace Kivo {

/// A datagram socket with a request for one interface; raises a reason when the socket cannot be had.
class NamedInterface {
public:
    explicit NamedInterface(const char* devName, int family = AF_INET)
    {
        requireLiveSystem();
        _socket = UniqueFd(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        requireCall(static_cast<bool>(_socket), "socket() failed");
        // A longer name stays away: cut to size it could be another interface's. No interface has the empty name.
        const std::size_t length = std::strlen(devName);
        if (length < sizeof _request.ifr_name)
            std::memcpy(_request.ifr_name, devName, length);
    }

    [[nodiscard]] int socket() const { return _socket.get(); }

    /// Make a request. @return what the kernel answered, zeroed where it did not
    const ifreq& tryCall(unsigned long code)
    {
        static_cast<void>(::ioctl(_socket.get(), code, &_request));
        return _request;
    }

    /// Make a request, or raise @p reason.
    const ifreq& call(unsigned long code, const char* reason)
    {
        requireCall(::ioctl(_socket.get(), code, &_request) == 0, reason);
        return _request;
    }

    /// Get or set one value of the device. @return the value
    unsigned int ethtool(unsigned int command, unsigned int data = 0)
    {
        ethtool_value value{command, data};
        _request.ifr_data = reinterpret_cast<char*>(&value);
        call(SIOCETHTOOL, "ioctl(SIOCETHTOOL) failed");
        return value.data;
    }

private:
    UniqueFd _socket;
    ifreq _request{};
};

} // namespace Kivo
