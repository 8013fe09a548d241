// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Many hosts behind a tun device, which answer echo requests as the test says.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace K7Test {

/// An IPv4 packet, from its header on.
using Packet = std::vector<std::uint8_t>;

/// What a host does with an echo request. A host that nothing was said about answers at once.
struct Answer {
    enum Kind {
        REPLY,
        CORRUPT,     ///< a reply spoilt so that the checksum over its first 20 bytes equals the one that it carries
        UNREACHABLE, ///< a "destination unreachable" that quotes the request
        OPTIONS      ///< a reply with four bytes of IP options
    };

    Kind kind = REPLY;
    std::chrono::milliseconds delay{0};
    int copies = 1;        ///< 20,000 a second
    std::string from = {}; ///< the answering address; empty for the one asked
    bool fromMany = false; ///< whether each copy comes from the address after that of the one before
};

/// The interface "tun0", 10.77.0.1, and every other host of 10.77.0.0/16, played by a thread. Needs to be root of the
/// network namespace.
class TunResponder {
public:
    static constexpr const char* INTERFACE = "tun0";

    TunResponder();
    ~TunResponder() { vanish(); }

    /// Whether the interface could be made.
    [[nodiscard]] bool isUp() const { return _thread.joinable(); }

    /// Say what a host does from now on.
    void answer(const std::string& address, const Answer& answer);

    /// The echo requests so far, in order, once there were so many.
    std::vector<Packet> requests(std::size_t atLeast = 0);

    /// Remove the interface.
    void vanish();

private:
    struct Due {
        Packet packet;
        int copies;
        bool fromMany;
    };

    void run();
    void take(const Packet& request);
    void sendWhatIsDue();

    int _fd;
    std::atomic<bool> _quit = false;
    std::multimap<std::chrono::steady_clock::time_point, Due> _due;
    std::mutex _mutex; ///< guards the two below
    std::map<std::uint32_t, Answer> _answers;
    std::vector<Packet> _requests;
    std::thread _thread;
};

} // namespace K7Test
