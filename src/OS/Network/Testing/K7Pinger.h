// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network quality tester: ICMP echoes to a list of targets, graded by what comes back.
#pragma once

#include "Foundation/J3Looper.h"
#include "OS/Network/Testing/K7PingerListener.h"
#include "OS/System/K7SystemUtilClass.h"

#include <map>
#include <memory>
#include <vector>

struct timeval;

namespace Kivo {

/// Where a pinger stands within a test cycle.
enum K7RunState : int32 {
    K7_STATE_IDLE = 0,    ///< no test; the only state that start() leaves
    K7_STATE_BEGIN = 1,   ///< started, the listeners are told next
    K7_STATE_PINGING = 2, ///< the test runs
    K7_STATE_STOPPED = 3, ///< the test is done or was stopped, the listeners are told next
    K7_STATE_END = 4      ///< the listeners are told of the end next
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
/// unreachable". That counts as a loss of the address it names, even when the message that it answers was not the
/// pinger's. So an address that is not a target may have a result; at most 4,096 such addresses are kept.
///
/// A round trip lasts from the sending of the echo to the time at which the kernel received the reply, measured on a
/// clock that the setting of the system's time does not disturb.
///
/// *Threads*: the test runs on a thread of the pinger's own. Targets, test count and interface should be changed while
/// the pinger is idle: what is changed during a test applies to the next one. Every operation may be called from any
/// thread, from a listener's callbacks too, except that a callback must not delete the pinger.
/// *Privilege*: CAP_NET_RAW; with CAP_NET_ADMIN the replies of many targets at once find room in the socket even where
/// net.core.rmem_max is small.
class K7SAL_API K7Pinger : public J3Looper {
public:
    using ResultMap = std::map<J3String, K7PingResult>; ///< by the address's text
    using ListenerList = std::vector<K7PingerListener*>;

    class K7SAL_LOCAL Worker; ///< private to the library

    K7Pinger();
    ~K7Pinger() override; ///< ends a running test as cleanup() does

    /// "{"state" : 0, "listeners" : 1}"
    [[nodiscard]] J3String toString() const override;

    /// Take the interface to test on, and let the worker thread run.
    ///
    /// When the system gives no thread, it is asked ten times within a second. Then isRunning() is false, testFailure()
    /// names this operation, and a test that is started waits for an init() that succeeds.
    /// @param ifceName a name that no interface has makes every test fail
    /// @return true. *Cost*: 100 ms unless the worker runs already
    bool init(const J3String& ifceName);

    /// End the worker thread, and with it a running test within a second; after this no listener is called, and the
    /// test that it ended reports nothing. The pinger is idle then, and init() lets it work again.
    ///
    /// In a callback it takes effect when the callback returns: no other listener is called, and the thread ends
    /// unless init() was called in the meantime.
    void cleanup();

    /// Begin a test. @return false, changing nothing, unless the pinger is idle
    bool start();

    /// Go on to the end of the cycle. A test that is not pinging yet is left out; one that is takes its full time.
    void stop();

    /// End the rounds of a running test and report what was made, within a second.
    ///
    /// The echoes under way have half a second from their sending to be answered. The results are graded by the rounds
    /// that were made; when there was none they stay at K7_PING_STATUS_UNKNOWN. Then the cycle ends as ever.
    void finish();

    /// Where the pinger stands. *Cost*: never waits for a listener
    [[nodiscard]] K7RunState runState() const;

    /// A copy of the counts of the running test so far, not graded until its rounds are over; empty when no test runs.
    /// *Cost*: never waits for a listener
    [[nodiscard]] ResultMap results() const;

    /// What went wrong first since the last start(), or in the last init(): the operation ("K7Pinger::createSocket"),
    /// the reason, its errno, and the target or interface that it was about. The reason also counts the messages whose
    /// senders were too many to be kept. The operation is empty when nothing went wrong.
    [[nodiscard]] K7SystemUtil::Failure testFailure() const;

    /// How long a test takes from onPingBegin() to onPingEnd() when nothing fails, in milliseconds.
    [[nodiscard]] uint32 expectedDuration() const;

    /// Append a target.
    ///
    /// Two with the same address share one result, which names the later one. It counts the echoes to both, twice as
    /// many as there are rounds, and so is graded by its average time alone unless a loss was reported.
    /// @param channel the caller's number for it
    /// @param address IPv4
    /// @return true
    bool addTarget(int32 channel, const K7InetAddress& address);

    void clearAllTarget(); ///< Remove every target.

    /// The number of rounds, 5 unless set.
    /// @{
    [[nodiscard]] uint32 testCount() const;
    void setTestCount(uint32 testCount);
    /// @}

    /// Append a listener, which must live until it is removed or the pinger is gone; null is ignored. A listener that
    /// is added twice is told twice. One that is added from a callback is told from the next call on.
    void addListener(K7PingerListener* listener);

    /// Remove the first entry of the listener; null is ignored. Once this has returned that entry is not called.
    void delListener(K7PingerListener* listener);

    void clearAllListener(); ///< Remove every listener, as delListener() does.

protected:
    void looperFunc() override;

private:
    K7SAL_LOCAL K7SystemUtil::Failure startThread();
    K7SAL_LOCAL void callNextListener();

    const std::unique_ptr<Worker> _worker;
};

} // namespace Kivo
