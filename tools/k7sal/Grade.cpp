// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a ping test tells of its targets, as sheets.
#include "Grade.h"

#include <algorithm>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;

namespace {

Value milliseconds(float32 time) { return time < 0 ? Value() : Value(Real{static_cast<float64>(time), 1}); }

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, uint16 traits = PLAIN,
                            Unit unit = Unit::NONE)
{
    return {key, heading, help, unit, Align::RIGHT, traits};
}

/// The column of one of a result's counts or times.
template <auto Read>
constexpr Column<Grade> counted(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {number(key, heading, help, traits), [](const Grade& grade) { return Value((grade.result.*Read)()); }};
}

template <auto Read>
constexpr Column<Grade> timed(const char* key, const char* heading, const char* help)
{
    return {number(key, heading, help), [](const Grade& grade) { return milliseconds((grade.result.*Read)()); }};
}

Value description(const Grade& grade)
{
    const K7PingStatus status = grade.result.status();
    return status == K7_PING_STATUS_UNKNOWN
               ? Value()
               : Value(K7PingResult::statusDescription(static_cast<uint32>(status)).to_string());
}

constexpr Column<Grade> GRADE_COLUMNS[] = {
    column<&Grade::channel>(number("channel", "channel", "Number of the target; none of another sender", IDENTITY)),
    column<&Grade::address>({"address", "address", "Address of the target", Unit::NONE, Align::LEFT, IDENTITY}),
    counted<&K7PingResult::transmitted>("sent", "sent", "Echoes sent"),
    counted<&K7PingResult::received>("received", "received", "Replies received"),
    counted<&K7PingResult::sysError>("send_errors", "send errors", "Echoes that could not be sent", DETAIL),
    counted<&K7PingResult::packetLoss>("lost", "lost", "Echoes lost without a trace, or reported to be", DETAIL),
    counted<&K7PingResult::duplicates>("duplicates", "duplicates", "Replies received once more", DETAIL),
    counted<&K7PingResult::chksumErr>("checksum_errors", "checksum errors", "Replies with a wrong checksum", DETAIL),
    {number("loss_percent", "loss", "Part of the echoes that was not answered", PLAIN, Unit::PERCENT),
     [](const Grade& grade) {
         return Value(Real{grade.lossPercent(), 0});
     }},
    timed<&K7PingResult::rttMin>("rtt_min_ms", "min ms", "Shortest round trip in ms"),
    timed<&K7PingResult::rttAvg>("rtt_avg_ms", "avg ms", "Average round trip in ms, later ones counting more"),
    timed<&K7PingResult::rttMax>("rtt_max_ms", "max ms", "Longest round trip in ms"),
    {{"grade", "grade", "great, good, normal, bad or worse"}, [](const Grade& grade) { return Value(grade.word()); }},
    {{"description", "meaning", "What the grade stands for"}, &description},
};

constexpr Column<PingTest> TEST_COLUMNS[] = {
    column<&PingTest::interface>({"interface", "interface", "Interface that the echoes left by"}),
    column<&PingTest::rounds>(number("rounds", "rounds", "Echoes to each target that were asked for")),
    column<&PingTest::complete>({"complete", "complete", "Whether the test came to its end"}),
};

template <class Record, std::size_t Count>
Sheet sheetOfRecords(const char* key, const char* heading, Shape shape, const Column<Record> (&columns)[Count],
                     const std::vector<Record>& records)
{
    Sheet sheet{key, heading, shape, 0, {}, {true, {}, {}}};
    for (const Column<Record>& column : columns)
        sheet.columns.push_back(column.info);
    for (const Record& record : records) {
        std::vector<Value>& row = sheet.data.rows.emplace_back();
        for (const Column<Record>& column : columns)
            row.push_back(column.read(record));
    }
    return sheet;
}

} // namespace

Grade::Grade(const K7PingResult& reported) : result(reported)
{
    // Of a sender that was not a target the pinger keeps neither.
    if (result.target().channel() < 0)
        return;
    channel = result.target().channel();
    address = result.target().address().toString().to_string();
}

bool Grade::isFine() const { return !isTarget() || result.status() >= K7_PING_STATUS_NORMAL; }

const char* Grade::word() const
{
    switch (result.status()) {
    case K7_PING_STATUS_GREAT:
        return "great";
    case K7_PING_STATUS_GOOD:
        return "good";
    case K7_PING_STATUS_NORMAL:
        return "normal";
    case K7_PING_STATUS_BAD:
        return "bad";
    case K7_PING_STATUS_WORSE:
        return "worse";
    case K7_PING_STATUS_UNKNOWN:
        break;
    }
    return nullptr;
}

float64 Grade::lossPercent() const
{
    const uint32 sent = result.transmitted();
    const uint32 lost = sent - std::min(sent, result.received());
    if (sent == 0)
        return result.received() > 0 ? 0.0 : 100.0;
    return 100.0 * lost / sent;
}

Style Grade::style() const
{
    if (result.status() == K7_PING_STATUS_UNKNOWN)
        return Style::PLAIN;
    if (result.status() >= K7_PING_STATUS_GOOD)
        return Style::GOOD;
    return result.status() == K7_PING_STATUS_NORMAL ? Style::WARNING : Style::BAD;
}

Grades gradesOf(const std::vector<K7PingResult>& results)
{
    Grades grades(results.begin(), results.end());
    std::stable_sort(grades.begin(), grades.end(), [](const Grade& left, const Grade& right) {
        return static_cast<uint32>(left.channel.value_or(-1)) < static_cast<uint32>(right.channel.value_or(-1));
    });
    return grades;
}

Sheet sheetOf(const PingTest& test)
{
    return sheetOfRecords("test", "Test", Shape::RECORD, TEST_COLUMNS, std::vector{test});
}

Sheet sheetOf(const Grades& grades) { return sheetOfRecords("results", "Results", Shape::LIST, GRADE_COLUMNS, grades); }

} // namespace K7Tool
