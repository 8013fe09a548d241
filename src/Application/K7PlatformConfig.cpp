// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the application decides about the platform.
#include "Application/K7PlatformConfig.h"

#include "Foundation/J3Assert.h"

namespace Kivo {

void K7PlatformConfig::LocalRecordParam::setIntervals(int32 appendCheck, int32 forceCleanupFrameWriters,
                                                      int32 partialFlush)
{
    _intervals[APPEND_CHECK] = appendCheck;
    _intervals[FORCE_CLEANUP_FRAME_WRITERS] = forceCleanupFrameWriters;
    _intervals[PARTIAL_FLUSH] = partialFlush;
}

int32 K7PlatformConfig::LocalRecordParam::interval(int32 index) const
{
    if (!J3_REQUIRE(index >= 0 && index < INTERVAL_SIZE, "invalid index", "Application/K7PlatformConfig"))
        return 0;
    return _intervals[index];
}

K7PlatformConfig* K7PlatformConfig::clone() const { return new K7PlatformConfig(*this); }

bool K7PlatformConfig::addThreadParam(int32 role, const ThreadParam& param)
{
    return _threadParamMap.insert({role, param}).second;
}

bool K7PlatformConfig::addThreadParam(int32 role, uint32 affinityMask, uint32 priority, J3Thread::Policy policy)
{
    return addThreadParam(role, ThreadParam(affinityMask, priority, policy));
}

const K7PlatformConfig::ThreadParam* K7PlatformConfig::threadParam(int32 role) const
{
    const auto entry = _threadParamMap.find(role);
    return entry == _threadParamMap.end() ? nullptr : &entry->second;
}

K7PlatformConfig::ThreadParam* K7PlatformConfig::threadParam(int32 role)
{
    const auto entry = _threadParamMap.find(role);
    return entry == _threadParamMap.end() ? nullptr : &entry->second;
}

void K7PlatformConfig::setLocalRecordParam(int32 appendCheck, int32 forceCleanupFrameWriters, int32 partialFlush)
{
    _localRecordParam.setIntervals(appendCheck, forceCleanupFrameWriters, partialFlush);
}

int32 K7PlatformConfig::appendCheckInterval() const
{
    return _localRecordParam.interval(LocalRecordParam::APPEND_CHECK);
}

int32 K7PlatformConfig::forceCleanupFrameWritersInterval() const
{
    return _localRecordParam.interval(LocalRecordParam::FORCE_CLEANUP_FRAME_WRITERS);
}

int32 K7PlatformConfig::partialFlushInterval() const
{
    return _localRecordParam.interval(LocalRecordParam::PARTIAL_FLUSH);
}

} // namespace Kivo
