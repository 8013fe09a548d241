// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test found out about one target.
#pragma once

#include "OS/Network/Testing/K7PingTarget.h"

namespace Kivo {

/// The grades of a target.
enum K7PingStatus : int32 {
    K7_PING_STATUS_UNKNOWN = 0, ///< not graded yet
    K7_PING_STATUS_WORSE = 1,   ///< something was lost, damaged, duplicated or could not be sent
    K7_PING_STATUS_BAD = 2,     ///< the average round trip takes 300 ms or more
    K7_PING_STATUS_NORMAL = 3,  ///< 100 ms or more
    K7_PING_STATUS_GOOD = 4,    ///< 50 ms or more
    K7_PING_STATUS_GREAT = 5    ///< less than 50 ms
};

/// The counts and round-trip times of one target during a test, and the grade they earn.
/// *Threads*: a value, as an int.
class K7SAL_API K7PingResult : public J3Record<K7PingResult> {
public:
    [[nodiscard]] K7PingResult* clone() const override;

    /// "target,status," and the six counts, "%u" each, and the three times, "%.1f" each, in the fields' order with
    /// commas between.
    [[nodiscard]] J3String toString() const override;

    /// The grade in words; "Unknown Status" for a number that is not a K7PingStatus.
    [[nodiscard]] static J3String statusDescription(uint32 status);

    [[nodiscard]] const K7PingTarget& target() const { return _target; }

    [[nodiscard]] K7PingStatus status() const { return _status; }

    [[nodiscard]] uint32 sysError() const { return _sysError; } ///< echoes that could not be sent

    [[nodiscard]] uint32 transmitted() const { return _transmitted; } ///< echoes sent

    [[nodiscard]] uint32 received() const { return _received; } ///< replies received

    [[nodiscard]] uint32 duplicates() const { return _duplicates; } ///< replies received once more

    [[nodiscard]] uint32 chksumErr() const { return _chksumErr; } ///< replies that the checksum test flagged

    [[nodiscard]] uint32 packetLoss() const { return _packetLoss; } ///< echoes lost

    static constexpr float32 NO_SAMPLE = -1.0F; ///< a round-trip time while there was no reply

    /// Round-trip times in milliseconds, or NO_SAMPLE. The average is a running mean that weights later replies more.
    /// @{
    [[nodiscard]] float32 rttMin() const { return _rttMin; }

    [[nodiscard]] float32 rttAvg() const { return _rttAvg; }

    [[nodiscard]] float32 rttMax() const { return _rttMax; }
    /// @}

    void setTarget(const K7PingTarget& target) { _target = target; }

    void setStatus(K7PingStatus status) { _status = status; }

    void setSysError(uint32 count) { _sysError = count; }

    void setTransmitted(uint32 count) { _transmitted = count; }

    void setReceived(uint32 count) { _received = count; }

    void setDuplicates(uint32 count) { _duplicates = count; }

    void setChksumErr(uint32 count) { _chksumErr = count; }

    void setPacketLoss(uint32 count) { _packetLoss = count; }

    void setRttMin(float32 milliseconds) { _rttMin = milliseconds; }

    void setRttAvg(float32 milliseconds) { _rttAvg = milliseconds; }

    void setRttMax(float32 milliseconds) { _rttMax = milliseconds; }

    void increaseSysError() { ++_sysError; }

    void increaseTransmitted() { ++_transmitted; }

    void increaseReceived() { ++_received; }

    void increaseDuplicates() { ++_duplicates; }

    void increaseChksumErr() { ++_chksumErr; }

    void increasePacketLoss() { ++_packetLoss; }

    /// Take one reply's round-trip time into the three times: the average moves half way to it.
    /// @param rtt milliseconds
    void updateRtt(float32 rtt);

    /// Grade the result, once all replies are in.
    ///
    /// Echoes that were never sent become system errors and echoes without any trace packet loss. A result with an
    /// error of any kind is K7_PING_STATUS_WORSE, a clean one is graded by its average time.
    /// @param testCount the number of echoes that were to be sent
    void analyze(const uint32& testCount);

    void copyFrom(const K7PingResult& other) { *this = other; }

    /// Become the result of no target, with nothing counted.
    void makeInvalid() { *this = K7PingResult(); }

    static auto fields(auto& self)
    {
        return std::tie(self._target, self._status, self._sysError, self._transmitted, self._received, self._duplicates,
                        self._chksumErr, self._packetLoss, self._rttMin, self._rttAvg, self._rttMax);
    }

private:
    K7PingTarget _target;
    K7PingStatus _status = K7_PING_STATUS_UNKNOWN;
    uint32 _sysError = 0;
    uint32 _transmitted = 0;
    uint32 _received = 0;
    uint32 _duplicates = 0;
    uint32 _chksumErr = 0;
    uint32 _packetLoss = 0;
    float32 _rttMin = NO_SAMPLE;
    float32 _rttAvg = NO_SAMPLE;
    float32 _rttMax = NO_SAMPLE;
};

} // namespace Kivo
