// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor cores and interrupt counts.
#include "OS/System/CPU.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/ProcessorParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <algorithm>

namespace Kivo {

namespace {

constexpr const char* PRESENT_PATH = "/sys/devices/system/cpu/present";
constexpr std::size_t PRESENT_LINE_SIZE = 511;
constexpr const char* INTERRUPTS_PATH = "/proc/interrupts";

/// Read the next line, without its line feed, of a caller's file. @return false at the end
bool readLine(FILE* file, std::string* line)
{
    line->clear();
    int c = EOF;
    while ((c = std::getc(file)) != EOF && c != '\n') {
        require(line->size() < SystemFile::MAX_SIZE, "a line of the file is too long", INTERRUPTS_PATH);
        line->push_back(static_cast<char>(c));
    }
    requireCall(std::ferror(file) == 0, "can't read the file", INTERRUPTS_PATH);
    return c != EOF || !line->empty();
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
        return parseCoreCount(line);
    });
}

uint64 K7SystemUtil::CPU::interruptCountOf(const J3String& name)
{
    return attemptOrThrow("CPU::interruptCountOf", [&name]() -> uint64 {
        SystemFile file(INTERRUPTS_PATH);
        if (!file)
            throwCantOpen(INTERRUPTS_PATH);
        std::string text;
        if (!file.readAll(&text))
            throwCantRead(INTERRUPTS_PATH);
        const std::string label = name.to_string();
        InterruptsParser rows(text);
        const int32 columns = std::min(coreCount(), rows.columns());
        for (InterruptRow row; rows.next(&row);)
            if (row.label == label)
                return sumOfInterrupts(row.counts, columns);
        return 0;
    });
}

bool K7SystemUtil::CPU::readInterrupts(std::vector<Interrupt>* interrupts)
{
    return attempt("CPU::readInterrupts", [interrupts] {
        require(interrupts, "interrupts is null");
        SystemFile file(INTERRUPTS_PATH);
        file.opened();
        std::string text;
        requireCall(file.readAll(&text), "can't read the file", INTERRUPTS_PATH);
        std::vector<Interrupt> found;
        InterruptsParser rows(text);
        for (InterruptRow row; rows.next(&row);) {
            const uint64 total = takeInterrupts(&row.counts, rows.columns());
            found.push_back({std::string(row.label), total, joinedWords(row.counts)});
        }
        *interrupts = std::move(found);
    });
}

bool K7SystemUtil::CPU::readLineFromProcInterrupts(std::vector<J3String>* tokens, FILE* file)
{
    return attempt("CPU::readLineFromProcInterrupts", [tokens, file] {
        require(tokens, "tokens is null");
        require(file, "file is null");
        std::string line;
        if (!readLine(file, &line))
            return false;
        std::vector<J3String> found;
        std::string_view row = line;
        std::string_view token;
        if (takeInterruptLabel(&row, &token))
            found.push_back(toWide(token));
        for (TextScanner fields(row); fields.field(&token);)
            found.push_back(toWide(token));
        *tokens = std::move(found);
        return true;
    });
}

} // namespace Kivo
