// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Guarded calls, invocations, assertion reports, the singleton.
#include "Foundation/J3Object.h"

#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3Invocation.h"
#include "Foundation/J3Port.h"
#include "Foundation/J3Singleton.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace Kivo;

namespace {

std::vector<std::string> reports;

// Collects assertion reports while it lives.
class ReportCollector {
public:
    ReportCollector() : _previous(J3AssertFunc::setHandler(collect)) { reports.clear(); }

    ~ReportCollector() { J3AssertFunc::setHandler(_previous); }

private:
    static void collect(const J3String& expression, const J3String& message, const J3String& function,
                        const J3String& path, int)
    {
        reports.push_back(J3String().format(L"%@|%@|%@|%@", &expression, &message, &function, &path).to_string());
    }

    J3AssertFunc::Handler _previous;
};

class Thrower : public J3Object {
public:
    void nothing() {}

    void exception() { throw J3RangeException(L"out of range", 0, 3, 4); }

    void object() { throw J3String(L"a text"); }

    void standard() { throw std::runtime_error("runtime"); }

    void other() { throw 42; }

    void perform(void (Thrower::*operation)())
    {
        performWithoutException(static_cast<void (J3Object::*)()>(operation));
    }
};

class Doubler : public J3Object {
public:
    bool invoke(const J3Invocation& invocation, J3MemoryStream* reply) override
    {
        if (!(invocation.name() == L"double"))
            return false;
        J3MemoryStream arguments(invocation.arguments());
        uint32 value = 0;
        arguments.readUint32(&value);
        if (reply)
            reply->writeUint32(2 * value);
        ++calls;
        return true;
    }

    int calls = 0;
};

class Recorder : public J3Port {
public:
    void invocationDone(uint32 id, bool known, const J3MemoryStream& reply) override
    {
        J3MemoryStream copy(reply);
        uint32 value = 0;
        if (copy.remains() != 0)
            copy.readUint32(&value);
        outcome = J3String().format(L"%u %d %u", id, known, value);
    }

    J3String outcome;
};

// Everything about it is private but what the test reads.
class Shared {
public:
    static inline std::atomic<int> attempts = 0;
    static inline std::atomic<int> made = 0;
    static inline std::atomic<bool> wasAllocating = false;

private:
    friend class J3Singleton<Shared>;

    Shared()
    {
        wasAllocating = J3Singleton<Shared>::isAllocating();
        if (attempts++ == 0)
            throw std::runtime_error("not yet");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ++made;
    }

    ~Shared() = default;
};

struct Early {
    int value = 7;
};

// Both run in this file's static initialisers.
const int earlyValue = J3Singleton<Early>::get()->value;
const bool earlyReport = [] {
    const ReportCollector collector;
    J3_REPORT("early", "in a static initialiser", "Foundation/J3ObjectTest");
    return reports.size() == 1;
}();

} // namespace

TEST(J3Object, ReportsWhateverAGuardedOperationThrows)
{
    const ReportCollector collector;
    Thrower thrower;
    thrower.perform(&Thrower::nothing);
    EXPECT_TRUE(reports.empty());
    thrower.perform(&Thrower::exception);
    thrower.perform(&Thrower::object);
    thrower.perform(&Thrower::standard);
    thrower.perform(&Thrower::other);
    const std::string place = "|performWithoutException|Foundation/J3Object";
    EXPECT_EQ(reports,
              (std::vector<std::string>{"no exception|out of range" + place, "no exception|a text" + place,
                                        "no exception|runtime" + place, "no exception|unknown exception" + place}));
    thrower.perform(nullptr);
    EXPECT_EQ(reports.back(), "operation|operation is Null!" + place);
}

TEST(J3Object, HandsTheOutcomeOfAnInvocationToThePort)
{
    J3MemoryStream arguments;
    arguments.writeUint32(21);
    Doubler doubler;
    Recorder recorder;
    const J3Invocation invocation(L"double", arguments);
    doubler.performInvocation(5, invocation, &recorder);
    EXPECT_EQ(recorder.outcome, L"5 1 42");
    doubler.performInvocation(6, invocation, &recorder); // its arguments are still all there
    EXPECT_EQ(recorder.outcome, L"6 1 42");
    doubler.performInvocation(7, J3Invocation(L"halve", arguments), &recorder);
    EXPECT_EQ(recorder.outcome, L"7 0 0");
    doubler.performInvocation(8, invocation, nullptr);
    EXPECT_EQ(doubler.calls, 3);
}

TEST(J3Object, HashesItsText)
{
    class Named : public J3Object {
    public:
        J3String toString() const override { return L"name"; }
    };

    EXPECT_EQ(Named().hash(), J3String(L"name").hash());
}

TEST(J3Assert, WritesOneLineInOneWriteAndKeepsErrno)
{
    // A pipe in packet mode gives back one write at a time.
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_DIRECT | O_CLOEXEC), 0);
    const int standardError = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    errno = EBUSY;
    j3assertFunc(L"dest", L"dest is\nNull! \x20AC", L"copy", L"OS/Misc", 12);
    const int errorAfter = errno;
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    close(ends[1]);

    std::array<char, 4096> line{};
    const ssize_t size = read(ends[0], line.data(), line.size());
    EXPECT_EQ(std::string(line.data(), size > 0 ? static_cast<std::size_t>(size) : 0),
              "OS/Misc:12: copy: dest is Null! \xE2\x82\xAC (dest)\n");
    EXPECT_EQ(read(ends[0], line.data(), line.size()), 0);
    EXPECT_EQ(errorAfter, EBUSY);
    close(ends[0]);
}

TEST(J3Assert, WorksInStaticInitialisers) { EXPECT_TRUE(earlyReport); }

TEST(J3Assert, GivesBackTheReplacedHandler)
{
    const auto handler = [](const J3String&, const J3String&, const J3String&, const J3String&, int) {};
    EXPECT_EQ(J3AssertFunc::setHandler(handler), nullptr);
    EXPECT_EQ(J3AssertFunc::setHandler(nullptr), static_cast<J3AssertFunc::Handler>(handler));
}

TEST(J3Exception, CarriesTextAndCode)
{
    const J3Exception exception(L"caf\xE9", ENOENT);
    EXPECT_STREQ(exception.what(), "caf\xC3\xA9");
    EXPECT_EQ(exception.errorCode(), ENOENT);
}

TEST(J3Singleton, IsMadeOnceUnderContentionAndAgainAfterAThrow)
{
    EXPECT_THROW(static_cast<void>(J3Singleton<Shared>::get()), std::runtime_error);
    EXPECT_TRUE(Shared::wasAllocating);
    EXPECT_FALSE(J3Singleton<Shared>::isAllocating());

    std::array<Shared*, 8> instances{};
    std::vector<std::jthread> threads;
    for (Shared*& instance : instances)
        threads.emplace_back([&instance] { instance = J3Singleton<Shared>::get(); });
    threads.clear();
    EXPECT_EQ(Shared::made, 1);
    EXPECT_EQ(Shared::attempts, 2);
    for (Shared* instance : instances)
        EXPECT_EQ(instance, J3Singleton<Shared>::get());
}

TEST(J3Singleton, WorksInStaticInitialisers) { EXPECT_EQ(earlyValue, 7); }
