// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rounds of a network quality test: its socket, its echoes and what comes back.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Lock.h"
#include "OS/Network/Testing/K7Pinger.h"
#include "OS/Network/Testing/detail/EvenClock_p.h"
#include "OS/Network/Testing/detail/PingTiming_p.h"

#include <atomic>

namespace Kivo {

/// What is to be tested.
struct PingOrder {
    J3String ifceName;
    uint32 testCount = 0;
    std::vector<K7PingTarget> targets;
};

/// Makes the rounds of one test after the other.
/// *Threads*: the worker's, except where an operation says more.
class PingRounds {
public:
    using ResultMap = K7Pinger::ResultMap;

    /// @param worker whose requests to quit end the rounds, and whose id the echoes carry
    explicit PingRounds(const J3Thread& worker);
    PingRounds(const PingRounds&) = delete;
    PingRounds& operator=(const PingRounds&) = delete;
    ~PingRounds() { destorySocket(); }

    /// Forget the last test's failure and request to finish. *Threads*: any
    void prepare();

    /// End the rounds, once the echoes under way have had their time. *Threads*: any
    void finish() { _finishing = true; }

    /// Make the rounds of a test. @throws std::exception, with the socket closed, when they cannot go on
    void run(PingOrder order);

    /// Grade the results by the rounds that were to be made, or were made when the test was finished early.
    void grade();

    /// Forget the results. *Threads*: any while the worker does not run
    void clear();

    /// The results, for the worker; their copy, for any thread.
    /// @{
    [[nodiscard]] const ResultMap& resultMap() const { return _resultMap; }
    [[nodiscard]] ResultMap results() const;
    /// @}

    /// The first failure since prepare(). *Threads*: any
    [[nodiscard]] K7SystemUtil::Failure failure() const;

    /// Keep the first failure of a test: those that follow tend to follow from it. *Threads*: any
    /// @param operation a literal
    /// @param target whom it was about; null for the interface
    /// @{
    void rememberFailure(const char* operation, const std::exception& error,
                         const K7InetAddress* target = nullptr) noexcept;
    void rememberFailure(const char* operation, const char* reason, int32 errorCode,
                         const K7InetAddress* target = nullptr) noexcept;
    /// @}

    /// Wait for a while, unless the test is to end.
    void rest(uint32 milliseconds) const;

    void destorySocket();

    /// What tests change before the first test begins.
    /// @{
    [[nodiscard]] PingTiming& timing() { return _timing; }
    void setSequenceNum(uint16 next) { _sequenceNum = next; }
    /// @}

private:
    struct Failure {
        const char* operation = nullptr; ///< a literal; null for no failure
        char reason[96] = "";
        int32 errorCode = 0;
        K7InetAddress target;
    };

    using Receive = bool (PingRounds::*)(uint32 timeout);

    void prepareResults();

    /// Send every target one echo.
    void pollOut();

    /// Take replies for the length of the window.
    void pollIn();

    /// Send one echo; when that fails, open the socket anew and pause. @return false
    bool sendTo(uint32 seq, const K7PingTarget& target);

    /// Wait for one datagram and take it into the results; when that fails, open the socket anew and pause.
    /// @return whether one was taken
    bool recvFrom(uint32 timeout);

    /// The same without a recovery. @throws J3Exception
    bool receive(uint32 timeout);
    bool receiveNow();
    [[nodiscard]] bool waitForDatagram(uint32 timeout) const;
    void takeDatagram(const J3String& sender, int64 stamp);

    /// Count one reply for @p address, or one loss when it is @p unreachable.
    /// @param chksumFlag whether the checksum test flagged the reply
    void onReceiveResult(const J3String& address, bool unreachable, bool chksumFlag, float32 rttMs);
    K7PingResult* resultFor(const J3String& address);

    /// Take what arrives for some time, or for @p whenFinishing only while the test is to be finished.
    void listenFor(uint32 milliseconds, uint32 whenFinishing, Receive operation = &PingRounds::recvFrom);
    void pause();
    void takeWhatWaits();
    void recoverFrom(const char* operation, const std::exception& error, const K7InetAddress* target = nullptr);

    /// Open the socket on an interface. @throws J3Exception, with no socket left open. @return true
    bool createSocket(const J3String& ifceName);
    void bindSocket(const J3String& ifceName) const;
    void configureSocket() const;

    const J3Thread& _worker;
    PingTiming _timing;
    PingOrder _order; ///< changed under _resultsMutex
    EvenClock _clock;
    int32 _socketFd;
    uint16 _sequenceNum = 1;
    std::vector<uint8> _dataBuffer;
    bool _hasPaused = false;   ///< in this round, because the interface cannot send
    uint32 _roundsToGrade = 0; ///< the count of rounds that the results are graded by
    std::atomic<bool> _finishing = false;

    J3RecursiveMutex _resultsMutex; ///< guards what follows, of which the worker alone changes the results
    ResultMap _resultMap;
    std::size_t _targetCount = 0; ///< entries of the map that are a target's
    uint64 _leftOut = 0;          ///< datagrams whose senders found no room in the map
    Failure _failure;
};

} // namespace Kivo
