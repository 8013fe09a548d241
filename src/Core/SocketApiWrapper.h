// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Raw socket calls.
#pragma once

#include "Core/SocketAddress.h"

namespace Kivo {

/// The system's socket calls on bare descriptors. A call that a signal interrupts is retried; a failure leaves its
/// reason in errno.
/// *Threads*: any number at once.
class K7CORE_API SocketApiWrapper {
public:
    static constexpr int INVALID_FD = -1;

    /// Protocols of createRawSocket().
    enum RawProtocol : int { RAW_ICMP = 2 };

    /// Open a raw socket, close-on-exec.
    /// @param protocol RAW_ICMP delivers incoming IPv4 ICMP datagrams with their IP header and sends without one; any
    ///                 other fails with EPROTONOSUPPORT
    /// @return the descriptor, owned by the caller, or INVALID_FD
    /// *Privilege*: CAP_NET_RAW
    [[nodiscard]] static int createRawSocket(int protocol);

    /// Close @p fd; INVALID_FD does nothing. errno keeps its value.
    static void closeSocket(int fd);

    /// Send one datagram, without raising SIGPIPE.
    /// @return the number of bytes sent, negative on failure
    static int sendTo(int fd, const char* data, int length, const SocketAddress& address);

    /// Take one datagram; what does not fit into @p capacity bytes of it is lost.
    /// @param fd       the socket
    /// @param buffer   takes the bytes
    /// @param capacity its size in bytes
    /// @param from     takes the sender; unchanged on failure
    /// @param wait     false fails with EAGAIN when none is there
    /// @param stamp    takes when the kernel received it, in nanoseconds since 1970 by the time of day; 0 when the
    ///                 socket has no stamps. Null when nobody wants it
    /// @return the number of bytes received, negative on failure
    static int recvFrom(int fd, char* buffer, int capacity, SocketAddress& from, bool wait = true,
                        int64* stamp = nullptr);

    /// Let the kernel stamp what @p fd receives. @return false, with the reason in errno, when it cannot
    /// *Source*: setsockopt(SO_TIMESTAMPNS)
    static bool enableStamps(int fd);
};

} // namespace Kivo
