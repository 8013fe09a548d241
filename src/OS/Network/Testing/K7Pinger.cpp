// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network quality tester: ICMP echoes to a list of targets, graded by what comes back.
#include "OS/Network/Testing/K7Pinger.h"

#include "Base/UniqueFd_p.h"
#include "Core/K7TickGuage.h"
#include "Core/SocketApiWrapper.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Protocol/Network/K7IPv4Header.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace Kivo {

namespace {

constexpr const char* SOURCE_PATH = "OS/Network/Testing/K7Pinger";
constexpr const char* SOCKET_IS_OPEN = "SocketApiWrapper::INVALID_FD != _socketFd";
constexpr const char* NOT_OPENED = "_socketFd is NOT opened!";

constexpr std::size_t MESSAGE_SIZE = 1024;
constexpr uint8 FILL = 0xAA;
constexpr uint32 LONGEST_SLEEP = 100; ///< how late a request to quit may be noticed in a pause

// Of a received datagram. IP options are not honoured.
constexpr uint32 ICMP_OFFSET = K7_IPV4_HEADER_SIZE;
constexpr uint32 PARSED_ICMP_SIZE = K7_ICMP_HEADER_SIZE + 4;
constexpr uint32 QUOTED_OFFSET = ICMP_OFFSET + K7_ICMP_HEADER_OFFSET_DEST_UNREACHABLE;

constexpr float32 LONGEST_RTT = 10000.0F;
constexpr float32 RTT_WHEN_TOO_LONG = 10.0F;

/// Room for the replies of 500 targets, each of which may occupy a page and the kernel's record of it, with as much
/// again for what else arrives while the echoes go out. The kernel doubles the value.
constexpr int RECEIVE_BUFFER = 500 * (4096 + 1024);

timeval timeOfDay()
{
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return now;
}

float32 roundTripTime(const K7IcmpHeader& reply)
{
    const timeval sent{static_cast<time_t>(reply.timeStamp1()), static_cast<suseconds_t>(reply.timeStamp2())};
    const float32 rtt = calcRoundTripTime(sent, timeOfDay());
    return rtt > LONGEST_RTT ? RTT_WHEN_TOO_LONG : rtt;
}

} // namespace

float32 calcRoundTripTime(const timeval& sent, const timeval& received)
{
    // Exact for every time of day, and defined for every other value.
    const float64 seconds = static_cast<float64>(received.tv_sec) - static_cast<float64>(sent.tv_sec);
    const float64 microseconds = static_cast<float64>(received.tv_usec) - static_cast<float64>(sent.tv_usec);
    return static_cast<float32>(std::max(seconds * 1e6 + microseconds, 0.0) / 1000.0);
}

K7Pinger::K7Pinger() : K7Pinger(K7PingTiming{}) {}

K7Pinger::K7Pinger(const K7PingTiming& timing, uint16 firstSequenceNum)
    : J3Looper(L"K7Pinger", nullptr), _socketFd(SocketApiWrapper::INVALID_FD), _sequenceNum(firstSequenceNum),
      _dataBuffer(MESSAGE_SIZE), _timing(timing)
{}

K7Pinger::~K7Pinger()
{
    cleanup();
    clearAllListener();
}

J3String K7Pinger::toString() const
{
    const K7RunState state = runState();
    const std::lock_guard guard(_listenersMutex);
    return J3String().format(L"{\"state\" : %d, \"listeners\" : %u}", state, static_cast<uint32>(_listeners.size()));
}

bool K7Pinger::init(const J3String& ifceName)
{
    if (isQuitRequested())
        join();
    _ifceName = ifceName;
    if (threadId() != 0)
        return true;
    while (!isRunning()) {
        run(false);
        sleep(100);
    }
    return true;
}

void K7Pinger::cleanup()
{
    quit();
    join();
    destorySocket();
    setRunState(K7_STATE_IDLE);
}

bool K7Pinger::start()
{
    const std::lock_guard guard(_stateMutex);
    if (!isIdleState())
        return false;
    {
        const std::lock_guard infoGuard(_infoMutex);
        _failure = {};
    }
    setRunState(K7_STATE_BEGIN);
    return true;
}

void K7Pinger::stop()
{
    const std::lock_guard guard(_stateMutex);
    if (!isIdleState())
        setRunState(K7_STATE_STOPPED);
}

bool K7Pinger::addTarget(int32 channel, const K7InetAddress& address)
{
    K7PingTarget target;
    target.setChannel(channel);
    target.setAddress(address);
    _targets.push_back(target);
    return true;
}

void K7Pinger::clearAllTarget() { _targets.clear(); }

uint32 K7Pinger::testCount() const { return _testCount; }

void K7Pinger::setTestCount(uint32 testCount) { _testCount = testCount; }

void K7Pinger::addListener(K7PingerListener* listener)
{
    if (!listener)
        return;
    const std::lock_guard guard(_listenersMutex);
    _listeners.push_back(listener);
}

void K7Pinger::delListener(K7PingerListener* listener)
{
    if (!listener)
        return;
    const std::lock_guard guard(_listenersMutex);
    const auto found = std::find(_listeners.begin(), _listeners.end(), listener);
    if (found == _listeners.end())
        return;
    const auto index = static_cast<std::size_t>(found - _listeners.begin());
    _listeners.erase(found);
    if (index < _notification.next)
        --_notification.next;
    if (index < _notification.end)
        --_notification.end;
}

void K7Pinger::clearAllListener()
{
    const std::lock_guard guard(_listenersMutex);
    _listeners.clear();
    _notification.next = _notification.end = 0;
}

K7SystemUtil::Failure K7Pinger::testFailure() const
{
    const std::lock_guard guard(_infoMutex);
    return _failure;
}

void K7Pinger::looperFunc()
{
    static constexpr void (K7Pinger::*HANDLERS[])() = {&K7Pinger::onIdle, &K7Pinger::onBegin, &K7Pinger::onPinging,
                                                       &K7Pinger::onStopped, &K7Pinger::onEnd};
    (this->*HANDLERS[runState()])();
    sleep(100);
}

bool K7Pinger::isIdleState() const { return runState() == K7_STATE_IDLE; }

K7RunState K7Pinger::runState() const
{
    const std::lock_guard guard(_stateMutex);
    return _runState;
}

void K7Pinger::setRunState(K7RunState state)
{
    const std::lock_guard guard(_stateMutex);
    const bool wakes = state != K7_STATE_IDLE && _runState == K7_STATE_IDLE;
    _runState = state;
    if (wakes)
        resume();
}

/// Go on to the next state unless stop() or cleanup() has set another one meanwhile.
void K7Pinger::advance(K7RunState from, K7RunState to)
{
    const std::lock_guard guard(_stateMutex);
    if (_runState == from)
        setRunState(to);
}

void K7Pinger::onIdle() {}

void K7Pinger::onBegin()
{
    notify([](K7PingerListener& listener) { listener.onPingBegin(); });
    advance(K7_STATE_BEGIN, K7_STATE_PINGING);
}

void K7Pinger::onPinging()
{
    if (_targets.empty())
        pause(_timing.withoutTarget);
    else
        invokePingTest();
    advance(K7_STATE_PINGING, K7_STATE_STOPPED);
}

void K7Pinger::onStopped()
{
    notify([](K7PingerListener& listener) { listener.onPingStopped(); });
    advance(K7_STATE_STOPPED, K7_STATE_END);
}

void K7Pinger::onEnd()
{
    notify([](K7PingerListener& listener) { listener.onPingEnd(); });
    setRunState(K7_STATE_IDLE);
}

/// Call every listener that was there when the pass began and still is, until a request to quit.
void K7Pinger::notify(const std::function<void(K7PingerListener&)>& call)
{
    const std::lock_guard guard(_listenersMutex);
    _notification = {&call, 0, _listeners.size()};
    while (_notification.next < _notification.end && !isQuitRequested())
        perform(&K7Pinger::callNextListener);
    _notification = {};
}

void K7Pinger::callNextListener()
{
    K7PingerListener* const listener = _listeners[_notification.next++];
    if (listener && listener->isActive())
        (*_notification.call)(*listener);
}

void K7Pinger::invokePingTest()
{
    prepareResults();
    try {
        runRounds();
    } catch (const std::exception& error) {
        rememberFailure("K7Pinger::invokePingTest", error);
    }
    destorySocket();
    reportResults();
}

void K7Pinger::prepareResults()
{
    _resultMap.clear();
    for (const K7PingTarget& target : _targets) {
        K7PingResult result;
        result.setTarget(target);
        _resultMap[target.address().toString()] = result;
    }
}

void K7Pinger::runRounds()
{
    createSocket(_ifceName);
    listenFor(_timing.settle); // what arrives meanwhile must not fill the socket up before the first echo
    for (uint32 round = 0; round < _testCount && !isQuitRequested(); ++round) {
        pollOut();
        pollIn();
    }
}

void K7Pinger::reportResults()
{
    const J3Time finishedAt = J3Time::from_time_t(std::time(nullptr));
    for (auto& entry : _resultMap) {
        K7PingResult& result = entry.second;
        result.analyze(_testCount);
        notify([&](K7PingerListener& listener) { listener.onPingResult(finishedAt, result); });
    }
}

void K7Pinger::pollOut()
{
    std::fill(_dataBuffer.begin(), _dataBuffer.end(), FILL);
    for (const K7PingTarget& target : _targets) {
        if (isQuitRequested())
            return;
        uint16 seq = _sequenceNum++;
        if (seq == 0) {
            seq = 1;
            _sequenceNum = 2;
        }
        sendTo(seq, target);
    }
}

void K7Pinger::pollIn() { listenFor(_timing.window); }

bool K7Pinger::sendTo(uint32 seq, const K7PingTarget& target)
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    try {
        const timeval now = timeOfDay();
        K7IcmpHeader echo;
        echo.setType(K7_ICMP_ECHO_REQUEST);
        echo.setId(static_cast<uint16>(threadId()));
        echo.setSeqNum(static_cast<uint16>(seq));
        echo.seTimestamp1(static_cast<uint32>(now.tv_sec));
        echo.seTimestamp2(static_cast<uint32>(now.tv_usec));
        echo.setData(_dataBuffer);
        echo.compileTo(&_dataBuffer);

        const J3String address = target.address().toString();
        K7PingResult& result = _resultMap[address];
        if (SocketApiWrapper::sendTo(_socketFd, reinterpret_cast<const char*>(_dataBuffer.data()),
                                     static_cast<int>(_dataBuffer.size()),
                                     SocketAddress(address, 0, false, _ifceName)) < 0)
            throw J3Exception(L"SocketApiWrapper::sendTo", errno);
        result.increaseTransmitted();
    } catch (const std::exception& error) {
        recoverFrom("K7Pinger::sendTo", error);
    }
    return false;
}

void K7Pinger::listenFor(uint32 milliseconds)
{
    const K7TickGuage gauge(milliseconds, false);
    for (uint32 elapsed; !isQuitRequested() && (elapsed = gauge.elapsedTick()) < milliseconds;)
        recvFrom(std::min(_timing.receive, milliseconds - elapsed));
}

bool K7Pinger::recvFrom() { return recvFrom(_timing.receive); }

bool K7Pinger::recvFrom(uint32 timeout)
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    try {
        SocketAddress sender(L"0.0.0.0");
        // A datagram that is there already costs one system call: floods are drained without waiting in between.
        if (!receiveNow(&sender) && !(waitForDatagram(timeout) && receiveNow(&sender)))
            return false;
        takeDatagram(sender);
        return true;
    } catch (const std::exception& error) {
        recoverFrom("K7Pinger::recvFrom", error);
        return false;
    }
}

bool K7Pinger::receiveNow(SocketAddress* sender)
{
    std::fill(_dataBuffer.begin(), _dataBuffer.end(), uint8{0});
    const int received = SocketApiWrapper::recvFrom(_socketFd, reinterpret_cast<char*>(_dataBuffer.data()),
                                                    static_cast<int>(_dataBuffer.size()), *sender, false);
    if (received < 0 && errno != EAGAIN)
        throw J3Exception(L"SocketApiWrapper::recvFrom", errno);
    return received >= 0;
}

bool K7Pinger::waitForDatagram(uint32 timeout) const
{
    pollfd socket{_socketFd, POLLIN, 0}; // unlike select(), of any number of open descriptors
    const int ready = retried([&] { return ::poll(&socket, 1, static_cast<int>(timeout)); });
    if (ready < 0)
        throw J3Exception(L"select()", errno);
    return ready > 0;
}

/// Count what lies in the buffer, which is zero behind what was received.
void K7Pinger::takeDatagram(const SocketAddress& sender)
{
    const K7IcmpHeader icmp(&_dataBuffer[ICMP_OFFSET], PARSED_ICMP_SIZE);
    if (icmp.type() == K7_ICMP_DEST_UNREACHABLE) {
        const K7IPv4Header failed(&_dataBuffer[QUOTED_OFFSET], K7_IPV4_HEADER_SIZE);
        onReceiveResult(failed.destAddress(), true, icmp.verifyChksum(), -1.0F);
    } else {
        onReceiveResult(sender.hostText(), false, icmp.verifyChksum(), roundTripTime(icmp));
    }
}

void K7Pinger::onReceiveResult(const J3String& address, bool unreachable, bool chksumFlag, float32 rttMs)
{
    K7PingResult& result = _resultMap[address];
    if (unreachable) {
        result.increasePacketLoss();
        return;
    }
    result.increaseReceived();
    if (chksumFlag)
        result.increaseChksumErr();
    result.updateRtt(rttMs);
}

bool K7Pinger::createSocket(const J3String& ifceName)
{
    destorySocket();
    _socketFd = SocketApiWrapper::createRawSocket(SocketApiWrapper::RAW_ICMP);
    if (_socketFd == SocketApiWrapper::INVALID_FD) {
        rememberFailure("K7Pinger::createSocket", L"SocketApiWrapper::createRawSocket", errno);
        J3_REPORT(SOCKET_IS_OPEN, NOT_OPENED, SOURCE_PATH);
    }
    try {
        bindSocket(ifceName);
    } catch (const J3Exception& error) {
        rememberFailure("K7Pinger::createSocket", error);
        destorySocket();
        throw;
    }
    configureSocket();
    return true;
}

void K7Pinger::bindSocket(const J3String& ifceName) const
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
void K7Pinger::configureSocket() const
{
    const int size = RECEIVE_BUFFER;
    if (::setsockopt(_socketFd, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof(size)) != 0)
        ::setsockopt(_socketFd, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
    const timeval longestSend{0, 500'000}; // a device that takes nothing must not hold cleanup() up
    ::setsockopt(_socketFd, SOL_SOCKET, SO_SNDTIMEO, &longestSend, sizeof(longestSend));
}

void K7Pinger::destorySocket()
{
    if (_socketFd == SocketApiWrapper::INVALID_FD)
        return;
    SocketApiWrapper::closeSocket(_socketFd);
    _socketFd = SocketApiWrapper::INVALID_FD;
}

void K7Pinger::recoverFrom(const char* operation, const std::exception& error)
{
    rememberFailure(operation, error);
    createSocket(_ifceName);
    pause(_timing.afterError);
}

void K7Pinger::pause(uint32 milliseconds) const
{
    const K7TickGuage gauge(milliseconds, false);
    for (uint32 elapsed; !isQuitRequested() && (elapsed = gauge.elapsedTick()) < milliseconds;)
        sleep(std::min(LONGEST_SLEEP, milliseconds - elapsed));
}

/// Keep the first failure of a test: those that follow tend to follow from it.
void K7Pinger::rememberFailure(const char* operation, const J3String& reason, int32 errorCode)
{
    const std::lock_guard guard(_infoMutex);
    if (_failure.operation.isEmpty())
        _failure = {operation, reason, errorCode};
}

void K7Pinger::rememberFailure(const char* operation, const std::exception& error)
{
    const auto* const coded = dynamic_cast<const J3Exception*>(&error);
    rememberFailure(operation, error.what(), coded ? coded->errorCode() : 0);
}

} // namespace Kivo
