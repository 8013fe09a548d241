// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test found out about one target.
#include "OS/Network/Testing/K7PingResult.h"

namespace Kivo {

namespace {

K7PingStatus gradeOf(float32 rttAvg)
{
    if (rttAvg >= 300.0F)
        return K7_PING_STATUS_BAD;
    if (rttAvg >= 100.0F)
        return K7_PING_STATUS_NORMAL;
    if (rttAvg >= 50.0F)
        return K7_PING_STATUS_GOOD;
    return K7_PING_STATUS_GREAT;
}

} // namespace

K7PingResult* K7PingResult::clone() const { return new K7PingResult(*this); }

J3String K7PingResult::toString() const
{
    J3String text;
    text.format(L"%@,%d,", &_target, _status);
    text.appendf(L"%u,%u,%u,%u,%u,%u,", _sysError, _transmitted, _received, _duplicates, _chksumErr, _packetLoss);
    return text.appendf(L"%.1f,%.1f,%.1f", _rttMin, _rttAvg, _rttMax);
}

J3String K7PingResult::statusDescription(uint32 status)
{
    switch (status) {
    case K7_PING_STATUS_WORSE:
        return L"Error (packet-loss or bad checksum or duplicates)";
    case K7_PING_STATUS_BAD:
        return L"Bad (packet round-trip avg >= 300 ms)";
    case K7_PING_STATUS_NORMAL:
        return L"Normal (packet round-trip avg < 300 ms)";
    case K7_PING_STATUS_GOOD:
        return L"Good (packet round-trip avg < 100 ms)";
    case K7_PING_STATUS_GREAT:
        return L"Great (packet round-trip avg < 50 ms)";
    default:
        return L"Unknown Status";
    }
}

void K7PingResult::updateRtt(float32 rtt)
{
    if (_rttMin == NO_SAMPLE || _rttMin > rtt)
        _rttMin = rtt;
    if (_rttMax == NO_SAMPLE || _rttMax < rtt)
        _rttMax = rtt;
    _rttAvg = _rttAvg == NO_SAMPLE ? rtt : (_rttAvg + rtt) * 0.5F;
}

void K7PingResult::analyze(const uint32& testCount)
{
    if (_transmitted < testCount) {
        _sysError = testCount - _transmitted;
        _status = K7_PING_STATUS_WORSE;
        return;
    }
    if (_transmitted == testCount && testCount > static_cast<uint64>(_received) + _packetLoss)
        _packetLoss = testCount - _received;
    const bool clean = _sysError == 0 && _packetLoss == 0 && _chksumErr == 0 && _duplicates == 0;
    _status = clean ? gradeOf(_rttAvg) : K7_PING_STATUS_WORSE;
}

} // namespace Kivo
