// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Name resolution and reachability, both within a time limit.
#include "Core/SocketChannel.h"
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <memory>
#include <thread>

#include <netdb.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>

namespace Kivo {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct AddressListDeleter {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

/// What getaddrinfo() gives. Nothing in it is the library's, because a look-up that was given up may still be running
/// while the process exits.
struct Resolution {
    int error;       ///< one of EAI_*, 0 for none
    int systemError; ///< the errno behind EAI_SYSTEM
    std::unique_ptr<addrinfo, AddressListDeleter> first;
};

struct Target {
    std::string host;
    std::string port;
};

Resolution resolve(const Target& target, int flags)
{
    addrinfo hints{};
    hints.ai_flags = flags | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    const int error = ::getaddrinfo(target.host.c_str(), target.port.c_str(), &hints, &first);
    const int systemError = error == EAI_SYSTEM ? errno : 0;
    return {error, systemError, std::unique_ptr<addrinfo, AddressListDeleter>(error == 0 ? first : nullptr)};
}

/// Keeps a thread that is started meanwhile from handling the host's signals.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &_before);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t _before{};
};

/// Look a name up on a thread that owns all that it works on: nobody waits for it once the time is over.
Resolution lookUp(Clock::time_point deadline, const Target& target)
{
    std::packaged_task<Resolution()> task([target] { return resolve(target, 0); });
    std::future<Resolution> answer = task.get_future();
    try {
        const SignalsBlocked forTheThread;
        std::thread(std::move(task)).detach();
    } catch (const std::system_error& error) {
        throw Reason{"can't start a thread", error.code().value(), target.host};
    }
    if (answer.wait_until(deadline) != std::future_status::ready)
        throw Reason{"getaddrinfo() timed out", ETIMEDOUT, target.host};
    return answer.get();
}

/// The addresses of a host, at least one, or a reason.
std::vector<SocketAddress> resolveUntil(Clock::time_point deadline, const Target& target)
{
    Resolution resolution = resolve(target, AI_NUMERICHOST);
    if (resolution.error == EAI_NONAME)
        resolution = lookUp(deadline, target);
    if (resolution.error != 0)
        throw Reason{std::string("getaddrinfo() failed: ") + ::gai_strerror(resolution.error), resolution.systemError,
                     target.host};
    std::vector<SocketAddress> addresses;
    for (const addrinfo* entry = resolution.first.get(); entry; entry = entry->ai_next) {
        SocketAddress address;
        if (address.assign(entry->ai_addr, entry->ai_addrlen))
            addresses.push_back(address);
    }
    require(!addresses.empty(), "getaddrinfo() failed: no address", target.host);
    return addresses;
}

/// The numeric host, with the scope of a link-local one.
J3String textOf(const SocketAddress& address)
{
    char text[NI_MAXHOST];
    const auto* const native = static_cast<const sockaddr*>(address.data());
    const bool known =
        ::getnameinfo(native, address.size(), text, sizeof text, nullptr, 0, NI_NUMERICHOST | NI_NUMERICSERV) == 0;
    return known ? J3String(text) : address.hostText();
}

/// The same address, in the scope of an interface when it is a link-local one without a scope of its own.
SocketAddress scopedTo(const char* ifce, const SocketAddress& address)
{
    sockaddr_in6 native{};
    if (address.family() == AF_INET6)
        std::memcpy(&native, address.data(), sizeof native);
    const bool isComplete = address.family() != AF_INET6 || native.sin6_scope_id != 0;
    return isComplete ? address : SocketAddress(address.hostText(), address.port(), false, ifce);
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
        const auto deadline = Clock::now() + milliseconds(ADDR_INFO_TIMEOUT);
        const std::vector<SocketAddress> found = resolveUntil(deadline, {host.to_string(), "0"});
        std::vector<J3String> texts(found.size());
        std::transform(found.begin(), found.end(), texts.begin(), textOf);
        *addresses = std::move(texts);
    });
}

bool K7SystemUtil::Network::testConnectivity(const char* ifce, const char* host, uint16 port)
{
    return attempt("Network::testConnectivity", [&] {
        require(hasText(ifce) && hasText(host) && port != 0, "invalid input parameters");
        requireLiveSystem();
        const auto deadline = Clock::now() + milliseconds(CONNECTIVITY_TIMEOUT);
        const std::vector<SocketAddress> addresses = resolveUntil(deadline, {host, std::to_string(port)});
        SocketChannel channel;
        channel.setInterfaceName(ifce);
        auto untried = static_cast<uint32>(addresses.size());
        const bool connected = std::any_of(addresses.begin(), addresses.end(), [&](const SocketAddress& address) {
            return channel.connect(scopedTo(ifce, address), millisecondsUntil(deadline) / untried--);
        });
        requireCall(connected, "connect() failed", host);
    });
}

} // namespace Kivo
