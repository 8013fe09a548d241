// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// TCP connection.
#pragma once

#include "Core/NetworkChannel.h"

namespace Kivo {

/// A TCP connection, over IPv4 or IPv6.
/// *Threads*: one at a time.
class K7CORE_API SocketChannel : public NetworkChannel {
public:
    SocketChannel();

    /// Connect to @p address, over the open socket or, when none is open, one of the address's family.
    /// @return false, with the reason in errno and the channel closed, on failure
    /// *Cost*: blocks until the peer answers or the kernel gives up, which takes minutes.
    bool connect(const SocketAddress& address);

    /// The same in at most @p timeoutMilliseconds; ETIMEDOUT when they have passed.
    bool connect(const SocketAddress& address, uint32 timeoutMilliseconds);

private:
    bool connectWithin(const SocketAddress& address, int64 milliseconds);
};

} // namespace Kivo
