// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every single allocation of an operation fails once: the caller gets std::bad_alloc, and the process goes on.
#include "support/SampleRecord.h"

#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3Looper.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

using namespace Kivo;

namespace {

constexpr int NEVER = -1;

// How many allocations succeed before all of them fail, on any thread.
std::atomic<int> s_left = NEVER;

void* allocate(std::size_t size)
{
    if (s_left != NEVER && (s_left == 0 || s_left-- == 0))
        throw std::bad_alloc();
    if (void* const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

/// Run @p operation with its first, its second, ... allocation failing, and all that follow, until none is left to
/// fail.
void failEachAllocationOf(const std::function<void()>& operation)
{
    for (int count = 0;; ++count) {
        ASSERT_LT(count, 10'000) << "fails whatever there is";
        s_left = count;
        bool failed = false;
        try {
            operation();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        const bool reached = s_left.exchange(NEVER) == 0;
        if (!failed && !reached)
            return;
    }
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t) noexcept { std::free(block); }

TEST(J3JsonArchive, FailedAllocationReachesTheCaller)
{
    const std::string json =
        R"({"a":[[1,{"b":"a text that is longer than a string has room for"}],[2.5,null]],"1":{"2":[3]}})";
    J3JsonArchive archive;
    ASSERT_TRUE(archive.fromJson(json));
    const std::vector<uint8> cbor = archive.toCbor();
    failEachAllocationOf([&] { J3JsonArchive().fromJson(json); });
    failEachAllocationOf([&] { J3JsonArchive().fromJson(json + "]"); });
    failEachAllocationOf([&] { J3JsonArchive().fromCbor(cbor); });
    failEachAllocationOf([&] { EXPECT_EQ(J3JsonArchive(archive).toJson(), json); });
    failEachAllocationOf([&] { archive = J3JsonArchive(archive); });
    EXPECT_EQ(archive.toJson(), json);
}

TEST(J3Record, FailedAllocationReachesTheCallerAndLeavesTheRecord)
{
    J3JsonArchive archive;
    J3MemoryStream stream;
    failEachAllocationOf([&] { SampleRecord().archiveTo(&archive); });
    failEachAllocationOf([&] {
        stream.clear();
        stream.writeObject(SampleRecord());
    });
    const SampleRecord before = otherRecord();
    const auto read = [&](auto operation) {
        SampleRecord record = before;
        try {
            operation(&record);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(record == before);
            throw;
        }
        EXPECT_TRUE(record == SampleRecord());
    };
    failEachAllocationOf([&] {
        stream.moveTo(0);
        read([&](SampleRecord* record) { record->deserializeFrom(&stream); });
    });
    failEachAllocationOf([&] { read([&](SampleRecord* record) { record->unarchiveFrom(&archive); }); });
}

TEST(J3Thread, FailedAllocationNeverEndsTheProcess)
{
    struct Thrower : J3Looper {
        Thrower() : J3Looper(L"a name that is longer than a string has room for") {}
        ~Thrower() override
        {
            quit();
            join();
        }
        void looperFunc() override
        {
            quit();
            throw J3Exception(L"a text that is longer than a string has room for");
        }
        void exceptionCaught(J3Exception& exception) override
        {
            static_cast<void>(J3String(exception.message()).to_string());
        }
    };
    failEachAllocationOf([] {
        Thrower thrower;
        if (!thrower.run(true))
            throw std::bad_alloc();
    });
    EXPECT_TRUE(Thrower().run(true));
}

TEST(J3String, FailedAllocationReachesTheCaller)
{
    const std::string narrow(100, 'x');
    failEachAllocationOf([&] {
        const J3String text = J3String().format(L"%s %1000d %.300f", narrow.c_str(), 1, 0.1);
        static_cast<void>(J3String::from_string(text.to_string("UTF-16BE"), "UTF-16BE").replace(L"x", L"xyz", true));
    });
}
