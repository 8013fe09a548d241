// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Owned socket of one kind.
#pragma once

#include "Core/SocketApiWrapper.h"

namespace Kivo {

/// A socket that is opened and closed as one thing and never outlives its channel. Derived classes say of which kind
/// it is and what is done with it.
/// *Threads*: one at a time.
class K7CORE_API NetworkChannel {
public:
    NetworkChannel(const NetworkChannel&) = delete;
    NetworkChannel& operator=(const NetworkChannel&) = delete;
    virtual ~NetworkChannel();

    /// Name the interface that the next open() binds the socket to; empty for none.
    void setInterfaceName(const J3String& name) { _interfaceName = name; }

    /// Close what is open and open a socket, close-on-exec, bound to the interface when one is named.
    /// @param family AF_INET or AF_INET6
    /// @return false, with the reason in errno and nothing open, on failure; ENODEV when no interface has the name
    /// *Source*: socket, setsockopt(SO_BINDTODEVICE)
    bool open(int family);

    /// Close the socket, if one is open. errno keeps its value.
    /// @param shutDown whether the connection is ended first, for every copy of the descriptor
    void close(bool shutDown);

    [[nodiscard]] bool isOpen() const { return _fd != SocketApiWrapper::INVALID_FD; }

    /// The descriptor, which stays the channel's, or SocketApiWrapper::INVALID_FD.
    [[nodiscard]] int fd() const { return _fd; }

protected:
    /// @param socketType the kind of socket: SOCK_STREAM, SOCK_DGRAM
    explicit NetworkChannel(int socketType) : _socketType(socketType) {}

private:
    bool bindToInterface(int fd) const;

    int _socketType;
    int _fd = SocketApiWrapper::INVALID_FD;
    J3String _interfaceName;
};

} // namespace Kivo
