// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// TCP connection.
#include "Core/SocketChannel.h"

#include "Base/UniqueFd_p.h"

#include <climits>

#include <algorithm>
#include <chrono>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

namespace Kivo {
namespace {

constexpr int64 NO_LIMIT = -1;

bool waitForConnection(int fd, int64 milliseconds)
{
    using namespace std::chrono;
    const auto start = steady_clock::now();
    pollfd request{fd, POLLOUT, 0};
    const int ready = retried([&] {
        const int64 passed = duration_cast<std::chrono::milliseconds>(steady_clock::now() - start).count();
        const int64 left = std::clamp<int64>(milliseconds - passed, 0, INT_MAX);
        return poll(&request, 1, milliseconds == NO_LIMIT ? -1 : static_cast<int>(left));
    });
    if (ready == 0)
        errno = ETIMEDOUT;
    if (ready <= 0)
        return false;
    int reason = 0;
    socklen_t size = sizeof(reason);
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &reason, &size) != 0)
        return false;
    if (reason != 0)
        errno = reason;
    return reason == 0;
}

/// Connect without blocking, wait, and leave the socket as blocking as it was.
bool connectSocket(int fd, const SocketAddress& address, int64 milliseconds)
{
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0 || fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0)
        return false;
    if (connect(fd, static_cast<const sockaddr*>(address.data()), address.size()) != 0 &&
        (errno != EINPROGRESS || !waitForConnection(fd, milliseconds)))
        return false;
    return fcntl(fd, F_SETFL, flags) == 0;
}

} // namespace

SocketChannel::SocketChannel() : NetworkChannel(SOCK_STREAM) {}

bool SocketChannel::connect(const SocketAddress& address) { return connectWithin(address, NO_LIMIT); }

bool SocketChannel::connect(const SocketAddress& address, uint32 timeoutMilliseconds)
{
    return connectWithin(address, timeoutMilliseconds);
}

bool SocketChannel::connectWithin(const SocketAddress& address, int64 milliseconds)
{
    const bool connected = (isOpen() || open(address.family())) && connectSocket(fd(), address, milliseconds);
    if (!connected)
        close(false);
    return connected;
}

} // namespace Kivo
