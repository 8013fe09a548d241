// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Many hosts behind a tun device, which answer echo requests as the test says.
#include "support/TunResponder.h"

#include "Protocol/Network/K7IPv4Header.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <cstdlib>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace K7Test {

using namespace Kivo;
using Clock = std::chrono::steady_clock;

namespace {

constexpr uint32 IP_SIZE = K7_IPV4_HEADER_SIZE;
constexpr uint32 QUOTED_SIZE = IP_SIZE + 8;

Packet messageOf(const Packet& request, Answer::Kind kind)
{
    Packet message(request.begin() + IP_SIZE, request.end());
    message[0] = K7_ICMP_ECHO_REPLY;
    if (kind == Answer::UNREACHABLE) {
        message = {K7_ICMP_DEST_UNREACHABLE, 1, 0, 0, 0, 0, 0, 0};
        message.insert(message.end(), request.begin(), request.begin() + QUOTED_SIZE);
    }
    K7IcmpHeader(message.data(), static_cast<uint32>(message.size())).compileTo(&message);
    if (kind == Answer::CORRUPT)
        std::fill_n(std::fill_n(message.begin(), 4, uint8{0}), 16, uint8{0xFF});
    return message;
}

Packet answerTo(const Packet& request, const Answer& answer)
{
    const Packet message = messageOf(request, answer.kind);
    Packet packet(answer.kind == Answer::OPTIONS ? IP_SIZE + 4 : IP_SIZE, 1); // options of no operation
    K7IPv4Header header(request.data(), IP_SIZE);
    header.setVersionAndHdrLen(static_cast<uint8>(0x40 | packet.size() / 4));
    header.setLength(htons(static_cast<uint16>(packet.size() + message.size())));
    header.setSourceIp(answer.from.empty() ? header.dstIp() : inet_addr(answer.from.c_str()));
    header.setDestIp(K7IPv4Header(request.data(), IP_SIZE).srcIp());
    header.setData(packet);
    header.compileTo(&packet);
    packet.insert(packet.end(), message.begin(), message.end());
    return packet;
}

/// Let a packet come from the address after its own.
void moveSender(Packet* packet)
{
    K7IPv4Header header(packet->data(), IP_SIZE);
    header.setSourceIp(htonl(ntohl(header.srcIp()) + 1));
    Packet moved;
    header.compileTo(&moved);
    std::copy(moved.begin(), moved.end(), packet->begin());
}

} // namespace

TunResponder::TunResponder() : _fd(::open("/dev/net/tun", O_RDWR | O_CLOEXEC | O_NONBLOCK))
{
    ifreq request{};
    std::strcpy(request.ifr_name, INTERFACE);
    request.ifr_flags = IFF_TUN | IFF_NO_PI;
    if (::ioctl(_fd, TUNSETIFF, &request) == 0 &&
        std::system("ip address add 10.77.0.1/16 dev tun0 && ip link set tun0 txqueuelen 4096 up") == 0)
        _thread = std::thread(&TunResponder::run, this);
}

void TunResponder::vanish()
{
    _quit = true;
    if (_thread.joinable())
        _thread.join();
    ::close(std::exchange(_fd, -1));
}

void TunResponder::answer(const std::string& address, const Answer& answer)
{
    const std::lock_guard guard(_mutex);
    _answers[inet_addr(address.c_str())] = answer;
}

std::vector<Packet> TunResponder::requests(std::size_t atLeast)
{
    for (;; std::this_thread::sleep_for(std::chrono::milliseconds(5))) {
        const std::lock_guard guard(_mutex);
        if (_requests.size() >= atLeast)
            return _requests;
    }
}

void TunResponder::run()
{
    Packet packet(2048);
    while (!_quit) {
        pollfd tun{_fd, POLLIN, 0};
        ::poll(&tun, 1, 1);
        for (ssize_t size; (size = ::read(_fd, packet.data(), packet.size())) > 0;)
            take(Packet(packet.begin(), packet.begin() + size));
        sendWhatIsDue();
    }
}

void TunResponder::take(const Packet& request)
{
    if (request.size() < QUOTED_SIZE || request[9] != IPPROTO_ICMP || request[IP_SIZE] != K7_ICMP_ECHO_REQUEST)
        return;
    const std::lock_guard guard(_mutex);
    _requests.push_back(request);
    const Answer& answer = _answers[K7IPv4Header(request.data(), IP_SIZE).dstIp()];
    if (answer.copies > 0)
        _due.emplace(Clock::now() + answer.delay, Due{answerTo(request, answer), answer.copies, answer.fromMany});
}

void TunResponder::sendWhatIsDue()
{
    for (const auto now = Clock::now(); !_due.empty() && _due.begin()->first <= now;) {
        auto next = _due.extract(_due.begin());
        auto& [packet, copies, fromMany] = next.mapped();
        while (::write(_fd, packet.data(), packet.size()) < 0 && errno == EAGAIN)
            std::this_thread::yield();
        if (--copies > 0) {
            if (fromMany)
                moveSender(&packet);
            next.key() += std::chrono::microseconds(50);
            _due.insert(std::move(next));
        }
    }
}

} // namespace K7Test
