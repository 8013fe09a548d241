// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rounds of a network quality test: its socket, its echoes and what comes back.
#include "Base/UniqueFd_p.h"
#include "Core/K7TickGuage.h"
#include "Core/SocketApiWrapper.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "OS/Network/Testing/detail/PingRounds_p.h"
#include "Protocol/Network/K7IPv4Header.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace Kivo {

namespace {

constexpr const char* SOURCE_PATH = "OS/Network/Testing/K7Pinger";
constexpr const char* SOCKET_IS_OPEN = "SocketApiWrapper::INVALID_FD != _socketFd";
constexpr const char* NOT_OPENED = "_socketFd is NOT opened!";

constexpr std::size_t MESSAGE_SIZE = 1024;
constexpr uint8 FILL = 0xAA;
constexpr uint32 LONGEST_SLEEP = 100; ///< how late a request to quit may be noticed in a pause
constexpr std::size_t MOST_STRANGERS = 4096;

// Of a received datagram. IP options are not honoured.
constexpr uint32 ICMP_OFFSET = K7_IPV4_HEADER_SIZE;
constexpr uint32 PARSED_ICMP_SIZE = K7_ICMP_HEADER_SIZE + 4;
constexpr uint32 QUOTED_OFFSET = ICMP_OFFSET + K7_ICMP_HEADER_OFFSET_DEST_UNREACHABLE;

constexpr float32 LONGEST_RTT = 10000.0F;
constexpr float32 RTT_WHEN_TOO_LONG = 10.0F;

/// Room for the replies of 500 targets, each of which may occupy a page and the kernel's record of it, with as much
/// again for what else arrives while the echoes go out. The kernel doubles the value.
constexpr int RECEIVE_BUFFER = 500 * (4096 + 1024);

float32 roundTripTime(const K7IcmpHeader& reply, const timeval& received)
{
    const timeval sent{static_cast<time_t>(reply.timeStamp1()), static_cast<suseconds_t>(reply.timeStamp2())};
    const float32 rtt = calcRoundTripTime(sent, received);
    return rtt > LONGEST_RTT ? RTT_WHEN_TOO_LONG : rtt;
}

int32 errorCodeOf(const std::exception& error)
{
    const auto* const coded = dynamic_cast<const J3Exception*>(&error);
    return coded ? coded->errorCode() : 0;
}

/// Whether an error is most likely every target's.
bool concernsInterface(const std::exception& error)
{
    const int32 code = errorCodeOf(error);
    return code == ENETDOWN || code == ENETUNREACH || code == ENODEV;
}

} // namespace

float32 calcRoundTripTime(const timeval& sent, const timeval& received)
{
    // Exact for every time of day, and defined for every other value.
    const float64 seconds = static_cast<float64>(received.tv_sec) - static_cast<float64>(sent.tv_sec);
    const float64 microseconds = static_cast<float64>(received.tv_usec) - static_cast<float64>(sent.tv_usec);
    return static_cast<float32>(std::max(seconds * 1e6 + microseconds, 0.0) / 1000.0);
}

PingRounds::PingRounds(const J3Thread& worker)
    : _worker(worker), _socketFd(SocketApiWrapper::INVALID_FD), _dataBuffer(MESSAGE_SIZE)
{}

void PingRounds::prepare()
{
    const std::lock_guard guard(_resultsMutex);
    _failure = {};
    _leftOut = 0;
    _finishing = false;
}

void PingRounds::run(PingOrder order)
{
    struct SocketCloser {
        PingRounds* rounds;
        ~SocketCloser() { rounds->destorySocket(); }
    };
    const SocketCloser closer{this};
    {
        const std::lock_guard guard(_resultsMutex);
        _order = std::move(order);
    }
    _roundsToGrade = _order.testCount;
    prepareResults();
    _clock = EvenClock();
    createSocket(_order.ifceName);
    listenFor(_timing.settle, 0); // what arrives meanwhile must not fill the socket up before the first echo
    for (uint32 made = 0; made < _order.testCount && !_worker.isQuitRequested(); ++made) {
        if (_finishing) {
            _roundsToGrade = made;
            return;
        }
        pollOut();
        pollIn();
    }
}

void PingRounds::prepareResults()
{
    const std::lock_guard guard(_resultsMutex);
    _resultMap.clear();
    for (const K7PingTarget& target : _order.targets)
        _resultMap[target.address().toString()].setTarget(target);
    _targetCount = _resultMap.size();
}

void PingRounds::grade()
{
    if (_roundsToGrade == 0 && _order.testCount > 0)
        return; // finished before the first round: there is nothing to grade
    const std::lock_guard guard(_resultsMutex);
    for (auto& [address, result] : _resultMap)
        result.analyze(_roundsToGrade);
}

void PingRounds::clear()
{
    const std::lock_guard guard(_resultsMutex);
    _resultMap.clear();
}

PingRounds::ResultMap PingRounds::results() const
{
    const std::lock_guard guard(_resultsMutex);
    return _resultMap;
}

void PingRounds::pollOut()
{
    _hasPaused = false;
    for (const K7PingTarget& target : _order.targets) {
        if (_worker.isQuitRequested())
            return;
        uint16 seq = _sequenceNum++;
        if (seq == 0) {
            seq = 1;
            _sequenceNum = 2;
        }
        std::fill(_dataBuffer.begin(), _dataBuffer.end(), FILL); // a recovery in between receives into it
        sendTo(seq, target);
    }
}

void PingRounds::pollIn() { listenFor(_timing.window, _timing.receive); }

bool PingRounds::sendTo(uint32 seq, const K7PingTarget& target)
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    try {
        const timeval now = _clock.now();
        K7IcmpHeader echo;
        echo.setType(K7_ICMP_ECHO_REQUEST);
        echo.setId(static_cast<uint16>(_worker.threadId()));
        echo.setSeqNum(static_cast<uint16>(seq));
        echo.seTimestamp1(static_cast<uint32>(now.tv_sec));
        echo.seTimestamp2(static_cast<uint32>(now.tv_usec));
        echo.setData(_dataBuffer);
        echo.compileTo(&_dataBuffer);

        const J3String address = target.address().toString();
        if (SocketApiWrapper::sendTo(_socketFd, reinterpret_cast<const char*>(_dataBuffer.data()),
                                     static_cast<int>(_dataBuffer.size()),
                                     SocketAddress(address, 0, false, _order.ifceName)) < 0)
            throw J3Exception(L"SocketApiWrapper::sendTo", errno);
        const std::lock_guard guard(_resultsMutex);
        _resultMap.find(address)->second.increaseTransmitted();
    } catch (const std::exception& error) {
        const bool pauses = !concernsInterface(error) || !std::exchange(_hasPaused, true);
        recoverFrom("K7Pinger::sendTo", error, &target.address());
        if (pauses)
            pause();
    }
    return false;
}

void PingRounds::listenFor(uint32 milliseconds, uint32 whenFinishing, Receive operation)
{
    for (const K7TickGuage gauge(milliseconds, false);;) {
        const uint32 end = _finishing ? std::min(whenFinishing, milliseconds) : milliseconds;
        const uint32 elapsed = gauge.elapsedTick();
        if (elapsed >= end || _worker.isQuitRequested())
            return;
        (this->*operation)(std::min(_timing.receive, end - elapsed));
    }
}

bool PingRounds::recvFrom(uint32 timeout)
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    try {
        return receive(timeout);
    } catch (const std::exception& error) {
        recoverFrom("K7Pinger::recvFrom", error);
        pause();
        return false;
    }
}

bool PingRounds::receive(uint32 timeout)
{
    // A datagram that is there already costs one system call: floods are drained without waiting in between.
    return receiveNow() || (waitForDatagram(timeout) && receiveNow());
}

/// Take the datagram that has waited longest. @return false when none waits
bool PingRounds::receiveNow()
{
    SocketAddress sender(L"0.0.0.0");
    int64 stamp = 0;
    std::fill(_dataBuffer.begin(), _dataBuffer.end(), uint8{0});
    const int received = SocketApiWrapper::recvFrom(_socketFd, reinterpret_cast<char*>(_dataBuffer.data()),
                                                    static_cast<int>(_dataBuffer.size()), sender, false, &stamp);
    if (received < 0 && errno != EAGAIN)
        throw J3Exception(L"SocketApiWrapper::recvFrom", errno);
    if (received >= 0)
        takeDatagram(sender.hostText(), stamp);
    else
        _clock.markNothingWaits();
    return received >= 0;
}

bool PingRounds::waitForDatagram(uint32 timeout) const
{
    pollfd socket{_socketFd, POLLIN, 0}; // unlike select(), of any number of open descriptors
    const int ready = retried([&] { return ::poll(&socket, 1, static_cast<int>(timeout)); });
    if (ready < 0)
        throw J3Exception(L"select()", errno);
    return ready > 0;
}

/// Count what lies in the buffer, which is zero behind what was received.
void PingRounds::takeDatagram(const J3String& sender, int64 stamp)
{
    const K7IcmpHeader icmp(&_dataBuffer[ICMP_OFFSET], PARSED_ICMP_SIZE);
    if (icmp.type() == K7_ICMP_DEST_UNREACHABLE) {
        const K7IPv4Header failed(&_dataBuffer[QUOTED_OFFSET], K7_IPV4_HEADER_SIZE);
        onReceiveResult(failed.destAddress(), true, icmp.verifyChksum(), -1.0F);
    } else {
        onReceiveResult(sender, false, icmp.verifyChksum(), roundTripTime(icmp, _clock.arrivalOf(stamp)));
    }
}

void PingRounds::onReceiveResult(const J3String& address, bool unreachable, bool chksumFlag, float32 rttMs)
{
    const std::lock_guard guard(_resultsMutex);
    K7PingResult* const result = resultFor(address);
    if (!result)
        return;
    if (unreachable) {
        result->increasePacketLoss();
        return;
    }
    result->increaseReceived();
    if (chksumFlag)
        result->increaseChksumErr();
    result->updateRtt(rttMs);
}

/// @return null for a stranger too many
K7PingResult* PingRounds::resultFor(const J3String& address)
{
    const auto found = _resultMap.find(address);
    if (found != _resultMap.end())
        return &found->second;
    if (_resultMap.size() < _targetCount + MOST_STRANGERS)
        return &_resultMap[address];
    ++_leftOut;
    return nullptr;
}

void PingRounds::recoverFrom(const char* operation, const std::exception& error, const K7InetAddress* target)
{
    rememberFailure(operation, error, target);
    takeWhatWaits();
    createSocket(_order.ifceName);
}

/// Take the replies that wait in the socket before it is closed, in a flood for the time of one pause.
void PingRounds::takeWhatWaits()
{
    const K7TickGuage gauge(_timing.afterError, false);
    try {
        while (receiveNow() && gauge.elapsedTick() < _timing.afterError && !_worker.isQuitRequested()) {
        }
    } catch (const std::exception&) {
        return; // no more can be had
    }
}

/// Wait after an error, and listen meanwhile; what fails in doing so is not recovered from.
void PingRounds::pause()
{
    const K7TickGuage gauge(_timing.afterError, false);
    try {
        listenFor(_timing.afterError, 0, &PingRounds::receive);
    } catch (const std::exception&) {
        rest(_timing.afterError - std::min(gauge.elapsedTick(), _timing.afterError));
    }
}

void PingRounds::rest(uint32 milliseconds) const
{
    const K7TickGuage gauge(milliseconds, false);
    for (uint32 elapsed; !_finishing && !_worker.isQuitRequested() && (elapsed = gauge.elapsedTick()) < milliseconds;)
        J3Thread::sleep(std::min(LONGEST_SLEEP, milliseconds - elapsed));
}

bool PingRounds::createSocket(const J3String& ifceName)
{
    destorySocket();
    _socketFd = SocketApiWrapper::createRawSocket(SocketApiWrapper::RAW_ICMP);
    if (_socketFd == SocketApiWrapper::INVALID_FD) {
        rememberFailure("K7Pinger::createSocket", "SocketApiWrapper::createRawSocket", errno);
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    }
    try {
        bindSocket(ifceName);
    } catch (const std::exception& error) {
        rememberFailure("K7Pinger::createSocket", error);
        destorySocket();
        throw;
    }
    configureSocket();
    _clock.markNothingWaits();
    return true;
}

void PingRounds::bindSocket(const J3String& ifceName) const
{
    const std::string name = ifceName.to_string();
    ifreq request{};
    if (name.size() >= sizeof(request.ifr_name))
        throw J3Exception(L"ioctl(SIOCGIFINDEX)", ENODEV);
    name.copy(request.ifr_name, name.size());
    if (::ioctl(_socketFd, SIOCGIFINDEX, &request) < 0)
        throw J3Exception(L"ioctl(SIOCGIFINDEX)", errno);
    if (::setsockopt(_socketFd, SOL_SOCKET, SO_BINDTODEVICE, &request, sizeof(request)) < 0)
        throw J3Exception(L"ioctl(SO_BINDTODEVICE)", errno);
}

/// Nothing here is worth failing for.
void PingRounds::configureSocket() const
{
    const int size = RECEIVE_BUFFER;
    if (::setsockopt(_socketFd, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof(size)) != 0)
        ::setsockopt(_socketFd, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
    const timeval longestSend{0, 500'000}; // a device that takes nothing must not hold cleanup() up
    ::setsockopt(_socketFd, SOL_SOCKET, SO_SNDTIMEO, &longestSend, sizeof(longestSend));
    SocketApiWrapper::enableStamps(_socketFd);
}

void PingRounds::destorySocket()
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        return;
    SocketApiWrapper::closeSocket(_socketFd);
    _socketFd = SocketApiWrapper::INVALID_FD;
}

void PingRounds::rememberFailure(const char* operation, const std::exception& error,
                                 const K7InetAddress* target) noexcept
{
    rememberFailure(operation, error.what(), errorCodeOf(error), target);
}

void PingRounds::rememberFailure(const char* operation, const char* reason, int32 errorCode,
                                 const K7InetAddress* target) noexcept
{
    const std::lock_guard guard(_resultsMutex);
    if (_failure.operation)
        return;
    _failure.operation = operation;
    std::snprintf(_failure.reason, sizeof(_failure.reason), "%s", reason);
    _failure.errorCode = errorCode;
    if (target)
        _failure.target = *target;
}

K7SystemUtil::Failure PingRounds::failure() const
{
    const std::lock_guard guard(_resultsMutex);
    K7SystemUtil::Failure failure{};
    if (_failure.operation) {
        const J3String target = _failure.target.toString();
        failure = {_failure.operation, _failure.reason, _failure.errorCode,
                   target.isEmpty() ? _order.ifceName : target};
    }
    if (_leftOut == 0)
        return failure;
    if (_failure.operation)
        failure.reason.appendf(L"; ");
    else
        failure.operation = L"K7Pinger::onReceiveResult";
    failure.reason.appendf(L"left out %llu messages of senders beyond the first %u that are no target",
                           static_cast<unsigned long long>(_leftOut), static_cast<uint32>(MOST_STRANGERS));
    return failure;
}

} // namespace Kivo
