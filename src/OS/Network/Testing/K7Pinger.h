// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network quality tester: ICMP echoes to a list of targets, graded by what comes back.
#pragma once

#include "Foundation/J3Looper.h"
#include "OS/Network/Testing/K7PingerListener.h"
#include "OS/System/K7SystemUtilClass.h"

#include <functional>
#include <map>
#include <vector>

struct timeval;

namespace Kivo {

class SocketAddress;

/// Where a pinger stands within a test cycle.
enum K7RunState : int32 {
    K7_STATE_IDLE = 0,    ///< no test; the only state that start() leaves
    K7_STATE_BEGIN = 1,   ///< started, the listeners are told next
    K7_STATE_PINGING = 2, ///< the test runs
    K7_STATE_STOPPED = 3, ///< the test is done or was stopped, the listeners are told next
    K7_STATE_END = 4      ///< the listeners are told of the end next
};

/// How long a pinger waits, in milliseconds.
struct K7PingTiming {
    uint32 settle = 1000;        ///< between opening the socket and the first echo
    uint32 window = 3000;        ///< for replies, after each round
    uint32 receive = 500;        ///< for one datagram within the window
    uint32 afterError = 500;     ///< after a send or receive that failed
    uint32 withoutTarget = 1000; ///< what a test without targets lasts
};

/// Compute the time between two times of day.
/// @return milliseconds; 0 unless @p sent is earlier than @p received
[[nodiscard]] K7SAL_API float32 calcRoundTripTime(const timeval& sent, const timeval& received);

/// Tests how well a list of targets answers ICMP echoes on one network interface.
///
/// Give it targets and listeners, init() it once and start() it for every test. A test sends each target one echo of
/// 1024 bytes a round, collects replies for three seconds after each round, and hands every target's graded
/// K7PingResult to the listeners: onPingBegin(), onPingResult() for each address in ascending order of its text,
/// onPingStopped(), onPingEnd(). That cycle is complete whatever fails; an echo that could not be sent is a system
/// error of its target, and testFailure() tells why. A socket that cannot be opened, or not be opened again after an
/// error because its interface has gone, ends the rounds at once.
///
/// Whatever ICMP message arrives on the interface during the test counts as its sender's reply, except a "destination
/// unreachable", which counts as a loss of the address it names. So an address that is no target may have a result.
///
/// *Threads*: the test runs on a thread of the pinger's own. Targets, test count and interface may be changed only
/// while the pinger is idle; everything else may be called from any thread, listeners included.
/// *Privilege*: CAP_NET_RAW; with CAP_NET_ADMIN the replies of many targets at once find room in the socket even where
/// net.core.rmem_max is small.
class K7SAL_API K7Pinger : public J3Looper {
public:
    using ResultMap = std::map<J3String, K7PingResult>;
    using ListenerList = std::vector<K7PingerListener*>;

    K7Pinger();
    ~K7Pinger() override; ///< ends a running test as cleanup() does

    /// "{"state" : 0, "listeners" : 1}"
    [[nodiscard]] J3String toString() const override;

    /// Take the interface to test on, and let the worker thread run.
    /// @param ifceName a name that no interface has makes every test fail
    /// @return true. *Cost*: 100 ms unless the worker runs already
    bool init(const J3String& ifceName);

    /// End the worker thread, and with it a running test within a second; after this no listener is called, and the
    /// test that it ended reports nothing. The pinger is idle then, and init() lets it work again.
    void cleanup();

    /// Begin a test. @return false, changing nothing, unless the pinger is idle
    bool start();

    /// Go on to the end of the cycle. A test that is not pinging yet is left out; one that is takes its full time.
    void stop();

    /// Append a target. Two with the same address share one result, which names the later one.
    /// @param channel the caller's number for it
    /// @param address IPv4
    /// @return true
    bool addTarget(int32 channel, const K7InetAddress& address);
    void clearAllTarget();

    /// The number of rounds, 5 unless set.
    [[nodiscard]] uint32 testCount() const;
    void setTestCount(uint32 testCount);

    /// Append a listener, which must live until it is removed or the pinger is gone; null is ignored. A listener that
    /// is added twice is told twice. One that is added from a callback is told from the next call on.
    void addListener(K7PingerListener* listener);

    /// Remove the first entry of the listener; null is ignored. Once this has returned that entry is not called.
    void delListener(K7PingerListener* listener);
    void clearAllListener();

    /// What went wrong first since the last start(): the operation ("K7Pinger::createSocket"), the reason and its
    /// errno. Its operation is empty when nothing did.
    [[nodiscard]] K7SystemUtil::Failure testFailure() const;

protected:
    /// For tests, which have no time.
    explicit K7Pinger(const K7PingTiming& timing, uint16 firstSequenceNum = 1);

    void looperFunc() override;

    [[nodiscard]] bool isIdleState() const;
    void setRunState(K7RunState state);

    void onIdle();
    void onBegin();
    void onPinging();
    void onStopped();
    void onEnd();

    /// Run one whole test; what it cannot do is noted as the test's failure.
    void invokePingTest();

    /// Send every target one echo.
    void pollOut();

    /// Take replies for the length of the window.
    void pollIn();

    /// Send one echo; when that fails, open the socket anew and pause. @return false
    bool sendTo(uint32 seq, const K7PingTarget& target);

    /// Wait for one datagram and take it into the results; when that fails, open the socket anew and pause.
    /// @return whether one was taken
    bool recvFrom();

    /// Count one reply for @p address, or one loss when it is @p unreachable.
    /// @param chksumFlag whether the checksum test flagged the reply
    void onReceiveResult(const J3String& address, bool unreachable, bool chksumFlag, float32 rttMs);

    /// Open the socket on an interface. @throws J3Exception, with no socket left open. @return true
    bool createSocket(const J3String& ifceName);
    void destorySocket();

private:
    /// A pass over the listeners, which may change the list while they are called.
    struct Notification {
        const std::function<void(K7PingerListener&)>* call = nullptr;
        std::size_t next = 0; ///< the entry to call next
        std::size_t end = 0;  ///< behind the last entry that was there when the pass began
    };

    [[nodiscard]] K7RunState runState() const;
    void advance(K7RunState from, K7RunState to);
    void notify(const std::function<void(K7PingerListener&)>& call);
    void callNextListener();

    void prepareResults();
    void runRounds();
    void reportResults();

    void pause(uint32 milliseconds) const;
    void listenFor(uint32 milliseconds);
    bool recvFrom(uint32 timeout);
    bool receiveNow(SocketAddress* sender);
    [[nodiscard]] bool waitForDatagram(uint32 timeout) const;
    void takeDatagram(const SocketAddress& sender);

    void bindSocket(const J3String& ifceName) const;
    void configureSocket() const;
    void recoverFrom(const char* operation, const std::exception& error);
    void rememberFailure(const char* operation, const J3String& reason, int32 errorCode);
    void rememberFailure(const char* operation, const std::exception& error);

    J3RecursiveMutex _infoMutex;  ///< guards _failure
    J3RecursiveMutex _stateMutex; ///< guards _runState
    K7RunState _runState = K7_STATE_IDLE;
    J3String _ifceName = L"eth1";
    uint32 _testCount = 5;
    int32 _socketFd;
    uint16 _sequenceNum;
    std::vector<uint8> _dataBuffer;
    std::vector<K7PingTarget> _targets;
    ResultMap _resultMap;
    J3RecursiveMutex _listenersMutex; ///< guards _listeners and _notification
    ListenerList _listeners;
    Notification _notification;
    K7SystemUtil::Failure _failure{};
    const K7PingTiming _timing;
};

} // namespace Kivo
