// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Version, casts, tick gauge, counters, texts of objects and exceptions, error trace, board data.
#include "Core/HalManager.h"
#include "Core/K7Cast.h"
#include "Core/K7CounterWithTick.h"
#include "Core/K7ExceptionCatcher.h"
#include "Core/K7SizeCounterByChannel.h"
#include "Core/K7SystemError.h"
#include "Core/K7Version.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <stdexcept>

using namespace Kivo;

namespace {

std::string textOf(const J3Object& object) { return object.toString().to_string(); }

template <class T>
void expectCast(const char* text, bool hexadecimal, bool trim, std::optional<T> expected)
{
    T value = 42;
    EXPECT_EQ(K7::castFrom(&value, text, hexadecimal, trim), expected.has_value()) << '"' << text << '"';
    EXPECT_EQ(value, expected.value_or(42)) << '"' << text << '"';
}

/// Counts the failed assertions of its scope instead of printing them.
class AssertCounter {
public:
    AssertCounter() : _before(J3AssertFunc::setHandler(count)) { s_count = 0; }

    ~AssertCounter() { J3AssertFunc::setHandler(_before); }

    int count() const { return s_count; }

    std::string function() const { return s_function; }

private:
    static void count(const J3String&, const J3String&, const J3String& function, const J3String&, int)
    {
        ++s_count;
        s_function = function.to_string();
    }

    static inline int s_count = 0;
    static inline std::string s_function;
    J3AssertFunc::Handler _before;
};

} // namespace

TEST(K7Version, IsWrittenWithDotsAndOrderedByNumber)
{
    K7Version version;
    version.setMajor(6);
    version.setMinor(10);
    version.setPatch(255);
    EXPECT_EQ(textOf(version), "6.10.255");
    EXPECT_EQ(J3String().format(L"%@", &version).to_string(), "6.10.255");
    EXPECT_LT(K7Version(6, 9, 0), version);
    EXPECT_LT(version, K7Version(7, 0, 0));
    J3MemoryStream stream;
    version.serializeTo(&stream);
    EXPECT_EQ(std::vector<uint8>(stream.buffer(), stream.buffer() + stream.size()), (std::vector<uint8>{6, 10, 255}));
    J3JsonArchive archive;
    version.archiveTo(&archive);
    EXPECT_EQ(archive.toJson(), R"({"1":6,"2":10,"3":255})");
}

TEST(K7Cast, TakesOneWholeDecimalNumberInRange)
{
    expectCast<uint8>("0", false, false, 0);
    expectCast<uint8>("255", false, false, 255);
    expectCast<uint8>("007", false, false, 7);
    for (const char* bad : {"256", "-1", "+1", "", " 1", "1 ", "1x", "ff", "0x1", "1.0", "\xD9\xA1"})
        expectCast<uint8>(bad, false, false, std::nullopt);
    expectCast<int8>("-128", false, false, -128);
    expectCast<int8>("128", false, false, std::nullopt);
    expectCast<int32>("-2147483648", false, false, INT32_MIN);
    expectCast<uint64>("18446744073709551615", false, false, UINT64_MAX);
    expectCast<uint64>("18446744073709551616", false, false, std::nullopt);
    expectCast<unsigned long long>("1", false, false, 1);
}

TEST(K7Cast, TakesHexadecimalWithAndWithoutPrefix)
{
    expectCast<uint64>("fe80000000000000", true, false, 0xFE80000000000000);
    expectCast<uint64>("0xFFFFFFFFFFFFFFFF", true, false, UINT64_MAX);
    expectCast<uint8>("0Xff", true, false, 255);
    expectCast<int32>("-0x10", true, false, -16);
    for (const char* bad : {"0x", "x1", "0x0x1", "0x-1", "-0x-1", "100", "fg", "0x 1"})
        expectCast<uint8>(bad, true, false, std::nullopt);
}

TEST(K7Cast, PassesOverSurroundingWhiteSpaceWhenAsked)
{
    expectCast<uint8>(" \t12\r\n", false, true, 12);
    expectCast<uint8>(" 0x1f ", true, true, 0x1F);
    expectCast<uint8>("1 2", false, true, std::nullopt);
    expectCast<uint8>("  ", false, true, std::nullopt);
}

TEST(K7Cast, ThrowsWhatItRefuses)
{
    uint8 value = 42;
    K7::castFromThrowable(&value, L"7");
    EXPECT_EQ(value, 7);
    try {
        K7::castFromThrowable(&value, L"300");
        FAIL() << "taken";
    } catch (const J3Exception& exception) {
        EXPECT_NE(std::string(exception.what()).find("\"300\""), std::string::npos);
    }
    EXPECT_EQ(value, 7);
}

TEST(K7TickGuage, IsDueWhenMoreThanItsIntervalHasPassed)
{
    constexpr uint32 START = 0xFFFFFF00; // the tick wraps during the interval
    K7TickGuage gauge(1000, false, START);
    EXPECT_FALSE(gauge.isElapsed(START + 1000));
    EXPECT_TRUE(gauge.isElapsed(START + 1001));
    gauge.restart(START + 1001);
    EXPECT_EQ(gauge.elapsedTick(START + 1101), 100U);
    EXPECT_FALSE(gauge.isElapsed(START + 2001));

    K7TickGuage dueAtOnce(1000, true, START);
    EXPECT_TRUE(dueAtOnce.isElapsed(START));
    dueAtOnce.restart(START);
    EXPECT_FALSE(dueAtOnce.isElapsed(START));
}

TEST(K7TickGuage, GivesTheFactorOfARate)
{
    const struct {
        uint32 interval, elapsed, minimum, expected;
    } cases[] = {{1000, 1000, 100, 1000},    {1000, 2000, 100, 500},        {1000, 1001, 100, 999},
                 {1000, 10000, 100, 100},    {1000, 50, 100, 10000},        {5120, 5120, 100, 5120},
                 {1000, 3000000, 100, 0},    {1000, 3, 0, 333333},          {1000, 0, 0, 1000000},
                 {100000, 0, 0, UINT32_MAX}, {UINT32_MAX, 1, 0, UINT32_MAX}};

    for (const auto& [interval, elapsed, minimum, expected] : cases) {
        K7TickGuage gauge(interval, true, 500);
        EXPECT_EQ(gauge.setNowConsiderElapsed(minimum, 500 + elapsed), expected) << interval << ' ' << elapsed;
        EXPECT_EQ(gauge.elapsedTick(500 + elapsed), 0U) << "starts anew";
        EXPECT_FALSE(gauge.isElapsed(500 + elapsed));
    }
}

TEST(K7CounterByChannel, CountsWhereItIsTold)
{
    K7CounterByChannel<4> counter(2);
    counter.add(0, 3, 5);
    counter.add(0, 3, 2);
    counter.add(1, 0);
    counter.set(1, 2, 9);
    EXPECT_EQ(counter.getByChannel(0), (std::array<unsigned, 4>{0, 0, 0, 7}));
    EXPECT_EQ(counter.getByChannel(1), (std::array<unsigned, 4>{1, 0, 9, 0}));
    EXPECT_EQ(counter.getPerSecond(0, 500), (std::array<float32, 4>{0, 0, 0, 3.5F}));
    counter.setChannelCount(3);
    EXPECT_EQ(counter.getByChannel(0)[3], 7U) << "kept";
    counter.clear();
    EXPECT_EQ(counter.getByChannel(0)[3], 0U);
    EXPECT_EQ(counter.channelCount(), 3U);
}

TEST(K7CounterByChannel, ReportsWhatIsOutOfRangeAndGoesOn)
{
    const AssertCounter asserts;
    K7CounterByChannel<4> counter(1);
    counter.add(0, 3);
    EXPECT_EQ(asserts.count(), 0);
    counter.add(0, 4);
    EXPECT_EQ(asserts.function(), "add");
    counter.set(1, 0, 7);
    EXPECT_EQ(counter.getByChannel(1), (std::array<unsigned, 4>{}));
    EXPECT_EQ(asserts.count(), 3);
    EXPECT_EQ(asserts.function(), "getByChannel");
    EXPECT_EQ(counter.getByChannel(0), (std::array<unsigned, 4>{0, 0, 0, 1}));
}

TEST(K7CounterWithTick, KeepsAWholePeriodInThePreviousSlot)
{
    K7CounterWithTick<K7SizeCounterByChannel<4>, 2> ring(1000);
    ring.setChannelCount(1);
    EXPECT_FALSE(ring.currentSlotTime().isValid());
    ring.start(0);
    EXPECT_TRUE(ring.currentSlotTime().isValid());
    EXPECT_EQ(ring.prevElapsedTick(), 1000U);
    ring.current().add(0, 1, 300);
    ring.current().add(0, 1, 200);
    const uint32 counted = ring.current().id();

    EXPECT_FALSE(ring.rotateIfDue(1000));
    EXPECT_TRUE(ring.rotateIfDue(1250));
    EXPECT_EQ(ring.previous().id(), counted);
    EXPECT_EQ(ring.previous().counter().getByChannel(0)[1], 2U);
    EXPECT_EQ(ring.previous().sizer().getByChannel(0)[1], 500U);
    EXPECT_EQ(ring.current().counter().getByChannel(0)[1], 0U);
    EXPECT_EQ(ring.prevElapsedTick(), 800U);
    EXPECT_FALSE(ring.rotateIfDue(2250));

    EXPECT_TRUE(ring.rotateIfDue(2251));
    EXPECT_EQ(ring.current().counter().getByChannel(0)[1], 0U) << "the slot used again is cleared";
    EXPECT_NE(ring.current().id(), counted) << "under a new identifier";
    EXPECT_EQ(ring.current().id(), ring.current().sizer().id());
}

TEST(K7CounterWithTick, ReadsTheTrueRateAfterASlotOfAnyLength)
{
    K7CounterWithTick<K7CounterByChannel<1>, 2> ring(1000);
    ring.setChannelCount(1);
    const auto previousRate = [&] { return ring.previous().getPerSecond(0, ring.prevElapsedTick())[0]; };
    uint32 now = 0;
    const auto countUntilRotated = [&] {
        do {
            ring.current().add(0, 0);
            now += 40; // 25 a second
        } while (!ring.rotateIfDue(now));
    };
    ring.start(now);
    countUntilRotated();
    EXPECT_NEAR(previousRate(), 25.0, 0.05);
    now += 10000; // idle, so that this slot becomes a long one
    countUntilRotated();
    EXPECT_NEAR(previousRate(), 0.1, 0.01);
    countUntilRotated();
    EXPECT_NEAR(previousRate(), 25.0, 0.05);
}

TEST(K7CounterWithTick, StartClearsTheCurrentSlotOnly)
{
    K7CounterWithTick<K7CounterByChannel<1>, 2> ring(1000);
    ring.setChannelCount(1);
    ring.start(0);
    ring.current().add(0, 0, 3);
    ring.rotateIfDue(2000);
    ring.current().add(0, 0, 4);
    const uint32 id = ring.current().id();
    ring.start(2500);
    EXPECT_EQ(ring.current().getByChannel(0)[0], 0U);
    EXPECT_EQ(ring.current().id(), id);
    EXPECT_EQ(ring.previous().getByChannel(0)[0], 3U);
    EXPECT_EQ(ring.prevElapsedTick(), 1000U);
    EXPECT_FALSE(ring.rotateIfDue(3500));
}

TEST(K7StringContainer, JoinsTheTextsOfObjects)
{
    K7StringContainer list(L", ");
    EXPECT_EQ(textOf(list), "");
    list.add(J3String());
    list.add(K7Version(1, 2, 3));
    list.add(J3String(L"x"));
    EXPECT_EQ(textOf(list), ", 1.2.3, x");
    EXPECT_EQ(list.count(), 3U);
}

TEST(K7ExceptionCatcher, RecordsEveryKindOfException)
{
    K7ExceptionCatcher catcher;
    catcher.collect();
    EXPECT_EQ(catcher.count(), 0U) << "nothing is in flight";
    const auto collect = [&](const auto& thrown) {
        try {
            std::rethrow_exception(std::make_exception_ptr(thrown));
        } catch (...) {
            catcher.collect();
        }
    };
    char text[] = "narrow";
    collect(J3Exception(L"\u00FCber", 5));
    collect(J3RangeException(L"range", 0, 1, 2));
    collect(J3String(L"text"));
    collect(K7Version(1, 2, 3));
    collect(std::runtime_error("standard"));
    collect(static_cast<char*>(text));
    collect(3);
    collect(2.5);
    const std::string lines = catcher.text().to_string();
    EXPECT_EQ(lines.find("\xC3\xBC"
                         "ber\n"),
              0U)
        << lines;
    EXPECT_NE(lines.find("\ntext\n1.2.3\nstandard\nnarrow\n3\nunknown exception"), std::string::npos) << lines;
    EXPECT_EQ(catcher.count(), 8U);
}

TEST(K7SystemError, WritesOneLineUntilAHandlerTakesOver)
{
    errno = EINTR;
    testing::internal::CaptureStderr();
    K7SystemError::trace(L"USB::start(1)", ENODEV);
    K7SystemError::trace(L"USB::start(2)", -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "USB::start(1): No such device (errno 19)\n"
                                                      "USB::start(2): unknown error (errno -1)\n");
    EXPECT_EQ(errno, EINTR);

    static std::string s_seen;
    const auto handler = [](const J3String& tag, int code) { s_seen = tag.to_string() + ' ' + std::to_string(code); };
    EXPECT_EQ(K7SystemError::setHandler(handler), nullptr);
    K7SystemError::trace(L"USB::resetDevice(2)", EIO);
    EXPECT_EQ(s_seen, "USB::resetDevice(2) 5");
    EXPECT_NE(K7SystemError::setHandler(nullptr), nullptr);
}

TEST(HalManager, KeepsWhatTheHostSays)
{
    HalManager* const board = J3Singleton<HalManager>::get();
    board->setInternalModelName(L"MODEL-1");
    EXPECT_EQ(J3Singleton<HalManager>::get()->internalModelName(), L"MODEL-1");
    board->setInternalModelName(L"");
}
