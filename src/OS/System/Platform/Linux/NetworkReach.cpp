// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Name resolution and reachability, both within a time limit.
#include "Core/SocketChannel.h"
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include <netdb.h>
#include <sys/socket.h>

namespace Kivo {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Resolution {
    int error; ///< one of EAI_*, 0 for none
    std::vector<J3String> addresses;
};

Resolution resolve(const std::string& host, int flags)
{
    addrinfo hints{};
    hints.ai_flags = flags;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    Resolution resolution{::getaddrinfo(host.c_str(), nullptr, &hints, &first), {}};
    if (resolution.error != 0)
        return resolution;
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(first, ::freeaddrinfo);
    for (const addrinfo* entry = first; entry; entry = entry->ai_next) {
        SocketAddress address;
        if (address.assign(entry->ai_addr, entry->ai_addrlen))
            resolution.addresses.push_back(address.hostText());
    }
    return resolution;
}

/// Resolve @p host into numeric texts, or raise a reason. A name is looked up by a thread that nobody waits for once
/// the time is over: it owns all that it works on.
std::vector<J3String> resolveUntil(Clock::time_point deadline, const std::string& host)
{
    Resolution resolution = resolve(host, AI_NUMERICHOST);
    if (resolution.error != 0) {
        std::packaged_task<Resolution()> lookUp([host] { return resolve(host, 0); });
        std::future<Resolution> answer = lookUp.get_future();
        std::thread(std::move(lookUp)).detach();
        require(answer.wait_until(deadline) == std::future_status::ready, "getaddrinfo() timed out");
        resolution = answer.get();
    }
    require(resolution.error == 0 && !resolution.addresses.empty(), "getaddrinfo() failed");
    return std::move(resolution.addresses);
}

uint32 millisecondsUntil(Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
    return static_cast<uint32>(std::max(left, milliseconds(0)).count());
}

} // namespace

bool K7SystemUtil::Network::getAddrInfo(std::vector<J3String>* addresses, const J3String& host)
{
    return attempt("Network::getAddrInfo", [&] {
        require(addresses && !host.isEmpty(), "invalid input parameters");
        requireLiveSystem();
        *addresses = resolveUntil(Clock::now() + milliseconds(ADDR_INFO_TIMEOUT), host.to_string());
    });
}

bool K7SystemUtil::Network::testConnectivity(const char* ifce, const char* host, uint16 port)
{
    return attempt("Network::testConnectivity", [&] {
        require(hasText(ifce) && hasText(host) && port != 0, "invalid input parameters");
        requireLiveSystem();
        const auto deadline = Clock::now() + milliseconds(CONNECTIVITY_TIMEOUT);
        const std::vector<J3String> addresses = resolveUntil(deadline, host);
        SocketChannel channel;
        channel.setInterfaceName(ifce);
        auto untried = static_cast<uint32>(addresses.size());
        const bool connected = std::any_of(addresses.begin(), addresses.end(), [&](const J3String& address) {
            const SocketAddress target(address, port, false, ifce);
            return channel.connect(target, millisecondsUntil(deadline) / untried--);
        });
        requireCall(connected, "connect() failed");
    });
}

} // namespace Kivo
