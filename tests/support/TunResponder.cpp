// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Many hosts behind a tun device, which answer echo requests as the test says.
#include "support/TunResponder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_tun.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace K7Test {

using std::chrono::milliseconds;

namespace {

constexpr std::size_t IP_SIZE = 20;
constexpr std::size_t ICMP_MINIMUM = 8;
constexpr std::uint8_t ECHO_REPLY = 0;
constexpr std::uint8_t UNREACHABLE = 3;
constexpr std::uint8_t ECHO_REQUEST = 8;

std::uint32_t addressOf(const std::string& text) { return inet_addr(text.c_str()); }

void put16(Packet* packet, std::size_t offset, std::uint16_t value)
{
    (*packet)[offset] = static_cast<std::uint8_t>(value >> 8);
    (*packet)[offset + 1] = static_cast<std::uint8_t>(value);
}

std::uint32_t get32(const Packet& packet, std::size_t offset)
{
    std::uint32_t value;
    std::memcpy(&value, &packet[offset], sizeof(value));
    return value;
}

void seal(Packet* icmp)
{
    put16(icmp, 2, 0);
    put16(icmp, 2, networkChecksum(icmp->data(), icmp->size()));
}

/// Give an echo reply the checksum that equals the one over its own first 20 bytes.
void sealFlagged(Packet* icmp)
{
    for (unsigned candidate = 0; candidate <= 0xFFFF; ++candidate) {
        put16(icmp, 2, static_cast<std::uint16_t>(candidate));
        if (networkChecksum(icmp->data(), 20) == candidate)
            return;
    }
}

Packet ipPacket(std::uint32_t from, std::uint32_t to, const Packet& options, const Packet& icmp)
{
    const std::size_t headerSize = IP_SIZE + options.size();
    Packet packet(IP_SIZE);
    packet[0] = static_cast<std::uint8_t>(0x40 | headerSize / 4);
    packet[8] = 64;
    packet[9] = IPPROTO_ICMP;
    put16(&packet, 2, static_cast<std::uint16_t>(headerSize + icmp.size()));
    std::memcpy(&packet[12], &from, sizeof(from));
    std::memcpy(&packet[16], &to, sizeof(to));
    packet.insert(packet.end(), options.begin(), options.end());
    put16(&packet, 10, networkChecksum(packet.data(), headerSize));
    packet.insert(packet.end(), icmp.begin(), icmp.end());
    return packet;
}

Packet answerTo(const Packet& request, const Answer& answer)
{
    const std::uint32_t asker = get32(request, 12);
    const std::uint32_t from = answer.from.empty() ? get32(request, 16) : addressOf(answer.from);
    if (answer.kind == Answer::UNREACHABLE) {
        Packet icmp(ICMP_MINIMUM);
        icmp[0] = UNREACHABLE;
        icmp[1] = 1; // host
        icmp.insert(icmp.end(), request.begin(), request.begin() + IP_SIZE + ICMP_MINIMUM);
        seal(&icmp);
        return ipPacket(from, asker, {}, icmp);
    }
    Packet icmp(request.begin() + IP_SIZE, request.end());
    icmp[0] = ECHO_REPLY;
    seal(&icmp);
    if (answer.kind == Answer::CORRUPT)
        icmp.back() ^= 0xFF;
    if (answer.kind == Answer::FLAGGED)
        sealFlagged(&icmp);
    const Packet noOperations(answer.kind == Answer::OPTIONS ? 4 : 0, 1);
    return ipPacket(from, asker, noOperations, icmp);
}

/// Let the kernel keep so many packets for the reader. The ioctl for this refuses the root of a user namespace.
bool setQueueLength(const char* ifceName, std::uint32_t length)
{
    struct {
        nlmsghdr head;
        ifinfomsg link;
        rtattr attribute;
        std::uint32_t length;
    } request{};

    request.head = {sizeof(request), RTM_NEWLINK, NLM_F_REQUEST, 1, 0};
    request.link.ifi_index = static_cast<int>(::if_nametoindex(ifceName));
    request.attribute = {sizeof(rtattr) + sizeof(length), IFLA_TXQLEN};
    request.length = length;
    const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    const bool sent = ::send(socket, &request, sizeof(request), 0) == sizeof(request);
    ::close(socket);
    return sent;
}

bool setUp(int tun)
{
    ifreq request{};
    std::strcpy(request.ifr_name, TunResponder::INTERFACE);
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto setFlags = [&](int fd, unsigned long what, short flags) {
        request.ifr_flags = flags;
        return ::ioctl(fd, what, &request) == 0;
    };
    const auto setAddress = [&](unsigned long what, const char* text) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = addressOf(text);
        std::memcpy(&request.ifr_addr, &address, sizeof(address));
        return ::ioctl(socket, what, &request) == 0;
    };
    const bool done = setFlags(tun, TUNSETIFF, IFF_TUN | IFF_NO_PI) && setAddress(SIOCSIFADDR, "10.77.0.1") &&
                      setAddress(SIOCSIFNETMASK, "255.255.0.0") && setQueueLength(TunResponder::INTERFACE, 4096) &&
                      setFlags(socket, SIOCSIFFLAGS, IFF_UP | IFF_RUNNING);
    ::close(socket);
    return done;
}

} // namespace

std::uint16_t networkChecksum(const std::uint8_t* bytes, std::size_t size)
{
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum += i % 2 == 0 ? static_cast<std::uint32_t>(bytes[i] << 8) : bytes[i];
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<std::uint16_t>(~sum);
}

TunResponder::TunResponder() : _fd(::open("/dev/net/tun", O_RDWR | O_CLOEXEC | O_NONBLOCK))
{
    _up = _fd >= 0 && setUp(_fd);
    if (_up)
        _thread = std::thread(&TunResponder::run, this);
}

TunResponder::~TunResponder() { vanish(); }

void TunResponder::vanish()
{
    _quit = true;
    if (_thread.joinable())
        _thread.join();
    if (_fd >= 0)
        ::close(_fd);
    _fd = -1;
}

void TunResponder::answer(const std::string& address, const Answer& answer)
{
    const std::lock_guard guard(_mutex);
    _answers[addressOf(address)] = answer;
}

std::vector<Packet> TunResponder::requests() const
{
    const std::lock_guard guard(_mutex);
    return _requests;
}

bool TunResponder::waitForRequests(std::size_t count) const
{
    const auto reached = [&] {
        const std::lock_guard guard(_mutex);
        return _requests.size() >= count;
    };
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!reached() && Clock::now() < deadline)
        std::this_thread::sleep_for(milliseconds(5));
    return reached();
}

void TunResponder::run()
{
    Packet packet(65536);
    _floodedUntil = Clock::now();
    while (!_quit) {
        pollfd tun{_fd, POLLIN, 0};
        ::poll(&tun, 1, millisecondsToNext());
        for (ssize_t size; (size = ::read(_fd, packet.data(), packet.size())) > 0;)
            handle(Packet(packet.begin(), packet.begin() + size));
        sendWhatIsDue();
        sendFlood();
    }
}

int TunResponder::millisecondsToNext() const
{
    if (_floodPerSecond > 0)
        return 1;
    if (_due.empty())
        return 20;
    const auto wait = std::chrono::ceil<milliseconds>(_due.top().at - Clock::now());
    return static_cast<int>(std::clamp<milliseconds::rep>(wait.count(), 0, 20));
}

void TunResponder::handle(const Packet& request)
{
    if (request.size() < IP_SIZE + ICMP_MINIMUM || request[0] != 0x45 || request[9] != IPPROTO_ICMP ||
        request[IP_SIZE] != ECHO_REQUEST)
        return;
    Answer answer;
    {
        const std::lock_guard guard(_mutex);
        _requests.push_back(request);
        if (const auto found = _answers.find(get32(request, 16)); found != _answers.end())
            answer = found->second;
    }
    if (answer.kind == Answer::NOTHING)
        return;
    for (int i = 0; i < answer.copies; ++i)
        _due.push({Clock::now() + answer.delay, answerTo(request, answer)});
}

void TunResponder::sendWhatIsDue()
{
    for (; !_due.empty() && _due.top().at <= Clock::now(); _due.pop())
        while (::write(_fd, _due.top().packet.data(), _due.top().packet.size()) < 0 && errno == EAGAIN) {
        }
}

void TunResponder::sendFlood()
{
    const auto now = Clock::now();
    if (_floodPerSecond == 0) {
        _floodedUntil = now;
        return;
    }
    Packet icmp(64);
    icmp[0] = ECHO_REPLY;
    seal(&icmp);
    const Packet packet = ipPacket(addressOf("10.77.255.254"), addressOf("10.77.0.1"), {}, icmp);
    for (; _floodedUntil < now; _floodedUntil += std::chrono::nanoseconds(1'000'000'000 / _floodPerSecond))
        if (::write(_fd, packet.data(), packet.size()) < 0)
            return;
}

} // namespace K7Test
