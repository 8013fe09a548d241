// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Many hosts behind a tun device, which answer echo requests as the test says.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <queue>
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
        NOTHING,
        CORRUPT,     ///< a reply with a byte of its data changed
        FLAGGED,     ///< a reply with a checksum that equals the one over the first 20 bytes
        UNREACHABLE, ///< a "destination unreachable" that quotes the request
        OPTIONS      ///< a reply with four bytes of IP options
    };

    Kind kind = REPLY;
    std::chrono::milliseconds delay{0};
    int copies = 1;
    std::string from = {}; ///< the answering address; empty for the one asked
};

/// The interface "tun0", 10.77.0.1, and every other host of 10.77.0.0/16, played by a thread. Needs to be root of the
/// network namespace.
class TunResponder {
public:
    static constexpr const char* INTERFACE = "tun0";

    TunResponder();
    ~TunResponder();
    TunResponder(const TunResponder&) = delete;
    TunResponder& operator=(const TunResponder&) = delete;

    /// Whether the interface could be made.
    [[nodiscard]] bool isUp() const { return _up; }

    /// Say what a host does from now on.
    void answer(const std::string& address, const Answer& answer);

    /// The echo requests so far, in order.
    [[nodiscard]] std::vector<Packet> requests() const;

    /// Wait until there were so many. @return whether there were, within ten seconds
    [[nodiscard]] bool waitForRequests(std::size_t count) const;

    /// Send @p perSecond small echo replies of nobody's from 10.77.255.254 until the end.
    void flood(unsigned perSecond) { _floodPerSecond = perSecond; }

    /// Remove the interface.
    void vanish();

private:
    using Clock = std::chrono::steady_clock;

    struct Due {
        Clock::time_point at;
        Packet packet;

        bool operator<(const Due& other) const { return at > other.at; }
    };

    void run();
    void handle(const Packet& request);
    void sendFlood();
    void sendWhatIsDue();
    [[nodiscard]] int millisecondsToNext() const;

    int _fd = -1;
    bool _up = false;
    std::atomic<bool> _quit = false;
    std::atomic<unsigned> _floodPerSecond = 0;
    Clock::time_point _floodedUntil{};
    std::priority_queue<Due> _due;
    mutable std::mutex _mutex; ///< guards the two below
    std::map<std::uint32_t, Answer> _answers;
    std::vector<Packet> _requests;
    std::thread _thread;
};

/// The Internet checksum, computed byte by byte in network order.
std::uint16_t networkChecksum(const std::uint8_t* bytes, std::size_t size);

} // namespace K7Test
