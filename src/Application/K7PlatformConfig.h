// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the application decides about the platform.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Thread.h"

#include <map>

namespace Kivo {

/// The platform configuration that the application hands down once, with K7SystemUtil::OS::setPlatformConfig().
///
/// It is a value of one process: it can be copied and cloned, but has no archive, stream or text form.
/// *Threads*: as a std::map.
class K7SAL_API K7PlatformConfig : public J3Object {
public:
    /// How the threads of one role are to run.
    class ThreadParam {
    public:
        ThreadParam(uint32 affinityMask, uint32 priority, J3Thread::Policy policy)
            : _affinityMask(affinityMask), _priority(priority), _policy(policy)
        {}

        /// The processors, one a bit, processor 0 in the lowest.
        [[nodiscard]] uint32 affinityMask() const { return _affinityMask; }

        [[nodiscard]] uint32 priority() const { return _priority; }

        [[nodiscard]] J3Thread::Policy policy() const { return _policy; }

        void setAffinityMask(uint32 mask) { _affinityMask = mask; }

        void setPriority(uint32 priority) { _priority = priority; }

        void setPolicy(J3Thread::Policy policy) { _policy = policy; }

    private:
        uint32 _affinityMask;
        uint32 _priority;
        J3Thread::Policy _policy;
    };

    /// The intervals of the local recording, in milliseconds.
    class K7SAL_API LocalRecordParam {
    public:
        enum IntervalsName { APPEND_CHECK = 0, FORCE_CLEANUP_FRAME_WRITERS = 1, PARTIAL_FLUSH = 2, INTERVAL_SIZE = 3 };

        void setIntervals(int32 appendCheck, int32 forceCleanupFrameWriters, int32 partialFlush);

        /// @param index an IntervalsName @return the interval; 0, after an assertion report, for any other index
        [[nodiscard]] int32 interval(int32 index) const;

    private:
        int32 _intervals[INTERVAL_SIZE] = {3000, 3600000, 2000};
    };

    /// Start with no thread roles and the usual intervals: 3 s, one hour, 2 s.
    K7PlatformConfig(bool usingParallelAppender, int32 storageGroupCount)
        : _usingParallelAppender(usingParallelAppender), _storageGroupCount(storageGroupCount)
    {}

    [[nodiscard]] K7PlatformConfig* clone() const override;

    void setStorageGroupCount(int32 count) { _storageGroupCount = count; }

    [[nodiscard]] int32 storageGroupCount() const { return _storageGroupCount; }

    void setUsingParallelAppender(bool used) { _usingParallelAppender = used; }

    [[nodiscard]] bool isUsingParallelAppender() const { return _usingParallelAppender; }

    /// @{
    /// Say how the threads of a role are to run.
    ///
    /// The role is a number of the application's choice.
    /// @return false, with the entry as it was, for a role that has one: threadParam() changes that
    bool addThreadParam(int32 role, const ThreadParam& param);
    bool addThreadParam(int32 role, uint32 affinityMask, uint32 priority, J3Thread::Policy policy);
    /// @}

    /// @{
    /// @return the entry of a role, valid as long as this record and until it is assigned to; null when there is none
    [[nodiscard]] const ThreadParam* threadParam(int32 role) const;
    [[nodiscard]] ThreadParam* threadParam(int32 role);
    /// @}

    void setLocalRecordParam(int32 appendCheck, int32 forceCleanupFrameWriters, int32 partialFlush);
    [[nodiscard]] int32 appendCheckInterval() const;
    [[nodiscard]] int32 forceCleanupFrameWritersInterval() const;
    [[nodiscard]] int32 partialFlushInterval() const;

private:
    std::map<int32, ThreadParam> _threadParamMap;
    LocalRecordParam _localRecordParam;
    bool _usingParallelAppender;
    int32 _storageGroupCount;
};

} // namespace Kivo
