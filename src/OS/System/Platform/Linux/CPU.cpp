// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor cores and interrupt counts.
#include "OS/System/CPU.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <algorithm>
#include <cstdlib>

namespace Kivo {

namespace {

constexpr const char* PRESENT_PATH = "/sys/devices/system/cpu/present";
constexpr std::size_t PRESENT_LINE_SIZE = 511;
constexpr const char* INTERRUPTS_PATH = "/proc/interrupts";

// 0-3
int32 parsePresent(const std::string& line)
{
    long long first = 0;
    long long last = 0;
    std::sscanf(line.c_str(), "%lld-%lld", &first, &last);
    using Limits = std::numeric_limits<int32>;
    return last == 0 ? 0 : static_cast<int32>(std::clamp<long long>(last, Limits::min(), Limits::max() - 1) + 1);
}

//            CPU0       CPU1
//  11:       2898       2900 GIC-0  27 Level     arch_timer
// IPI0:       132        262       Rescheduling interrupts
// IPI1:1794000000 1723000000       Function call interrupts
// Err:          0
//
// Cuts the label and its colon off the front; a row is not sure to have a blank behind the colon.
bool takeLabel(std::string_view* row, std::string_view* label)
{
    if (!TextScanner(*row).field(label))
        return false;
    *label = label->substr(0, label->find(':'));
    row->remove_prefix(static_cast<std::size_t>(label->data() - row->data()) + label->size());
    if (row->starts_with(':'))
        row->remove_prefix(1);
    return true;
}

bool takeRow(std::string_view* text, std::string_view* row)
{
    if (text->empty())
        return false;
    *row = text->substr(0, text->find('\n'));
    text->remove_prefix(std::min(row->size() + 1, text->size()));
    return true;
}

uint64 sumOfRow(std::string_view text, std::string_view name, int32 columns)
{
    std::string_view row;
    std::string_view label;
    takeRow(&text, &row); // the processors' names
    while (takeRow(&text, &row)) {
        if (!takeLabel(&row, &label) || label != name)
            continue;
        uint64 sum = 0;
        std::string_view column;
        for (TextScanner fields(row); columns > 0 && fields.field(&column); --columns)
            sum += toWide(column).toUint64();
        return sum;
    }
    return 0;
}

bool noReading(const char* operation, int32* value)
{
    return attempt(operation, [value] {
        if (value)
            *value = 0;
        require(false, "this platform gives no reading");
    });
}

} // namespace

int32 K7SystemUtil::CPU::modelType() { return 0; }

bool K7SystemUtil::CPU::getTempAlarm(int32* value) { return noReading("CPU::getTempAlarm", value); }

bool K7SystemUtil::CPU::getTempValue(int32* value) { return noReading("CPU::getTempValue", value); }

int32 K7SystemUtil::CPU::coreCount()
{
    return attemptOrThrow("CPU::coreCount", [] {
        SystemLines lines(PRESENT_PATH, PRESENT_LINE_SIZE);
        if (!lines)
            throwCantOpen(PRESENT_PATH);
        std::string_view line;
        if (!lines.next(&line))
            throwCantRead(PRESENT_PATH);
        return parsePresent(std::string(line));
    });
}

uint64 K7SystemUtil::CPU::interruptCountOf(const J3String& name)
{
    return attemptOrThrow("CPU::interruptCountOf", [&name] {
        SystemFile file(INTERRUPTS_PATH);
        if (!file)
            throwCantOpen(INTERRUPTS_PATH);
        std::string text;
        if (!file.readAll(&text))
            throwCantRead(INTERRUPTS_PATH);
        return sumOfRow(text, name.to_string(), coreCount());
    });
}

bool K7SystemUtil::CPU::readLineFromProcInterrupts(std::vector<J3String>* tokens, FILE* file)
{
    if (!tokens || !file)
        return false;
    char* line = nullptr;
    std::size_t capacity = 0;
    const ssize_t length = ::getline(&line, &capacity, file);
    const std::unique_ptr<char, void (*)(void*)> owner(line, std::free);
    if (length < 0)
        return false;

    std::string_view row(line, static_cast<std::size_t>(length));
    std::string_view token;
    tokens->clear();
    if (takeLabel(&row, &token))
        tokens->push_back(toWide(token));
    for (TextScanner fields(row); fields.field(&token);)
        tokens->push_back(toWide(token));
    return true;
}

} // namespace Kivo
