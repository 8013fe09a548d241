// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Requests to the kernel about one named network interface.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/UniqueFd_p.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

#include <string_view>

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace Kivo {

/// A datagram socket with a request for one interface; whatever fails is raised as a reason about that interface.
class NamedInterface {
public:
    explicit NamedInterface(const char* devName, int family = AF_INET) : _devName(devName)
    {
        requireLiveSystem();
        _socket = UniqueFd(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        requireCall(static_cast<bool>(_socket), "socket() failed", _devName);
        // A longer name stays away: cut to size it could be another interface's. No interface has the empty name.
        if (_devName.size() < sizeof _request.ifr_name)
            _devName.copy(_request.ifr_name, _devName.size());
    }

    /// Ask about the interface. @return what the kernel answered
    const ifreq& call(unsigned long code, const char* reason)
    {
        request(code, &_request, reason);
        return _request;
    }

    /// Get or set one value of the device. @return the value
    unsigned int ethtool(unsigned int command, unsigned int data = 0)
    {
        ethtool_value value{command, data};
        _request.ifr_data = reinterpret_cast<char*>(&value);
        request(SIOCETHTOOL, &_request, "ioctl(SIOCETHTOOL) failed");
        return value.data;
    }

    /// Ask for the interfaces that have an IPv4 address, in as many entries as @p list has room for.
    void listConfigured(ifconf* list) { request(SIOCGIFCONF, list, "ioctl(SIOCGIFCONF) failed"); }

private:
    void request(unsigned long code, void* argument, const char* reason)
    {
        requireCall(::ioctl(_socket.get(), code, argument) == 0, reason, _devName);
    }

    std::string_view _devName;
    UniqueFd _socket;
    ifreq _request{};
};

} // namespace Kivo
