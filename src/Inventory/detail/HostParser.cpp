// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What tells a machine and its system apart: version texts, the load, names in the device tree.
#include "Inventory/detail/HostParser_p.h"

namespace Kivo::Inventory {

// Linux version 6.1.0-56-arm64 (debian-kernel@lists.debian.org) (gcc-12 ...) #1 SMP ...
std::string_view parseKernelRelease(std::string_view version)
{
    TextScanner words(version);
    std::string_view release;
    return words.literal("Linux version ") && words.word(&release) ? release : std::string_view();
}

std::string_view parseKernelNumbers(std::string_view release)
{
    const auto isPart = [](char c) { return isDecimalDigit(c) || c == '.'; };
    const auto end = std::find_if_not(release.begin(), release.end(), isPart);
    std::string_view numbers(release.begin(), end);
    while (numbers.ends_with('.'))
        numbers.remove_suffix(1);
    return numbers;
}

// PRETTY_NAME="Debian GNU/Linux 12 (bookworm)"
std::optional<std::string> parseOsRelease(std::string_view text, std::string_view name)
{
    TextScanner lines(text);
    for (std::string_view line; lines.line(&line);) {
        TextScanner assignment(line);
        if (!assignment.literal(name) || !assignment.literal("="))
            continue;
        const std::string_view quoted = trimmed(assignment.rest());
        const bool hasQuotes =
            quoted.size() >= 2 && (quoted.front() == '"' || quoted.front() == '\'') && quoted.back() == quoted.front();
        std::string value;
        bool isEscaped = false;
        for (const char c : hasQuotes ? quoted.substr(1, quoted.size() - 2) : quoted) {
            isEscaped = c == '\\' && !isEscaped;
            if (!isEscaped)
                value += c;
        }
        return value;
    }
    return std::nullopt;
}

std::vector<std::string> parseTextList(std::string_view bytes)
{
    std::vector<std::string> texts;
    constexpr std::string_view NULL_BYTE("\0", 1);
    TextScanner scanner(bytes);
    for (std::string_view text; scanner.field(&text, NULL_BYTE);)
        texts.emplace_back(text);
    return texts;
}

// 0.08 0.02 0.01 1/85 348
std::optional<LoadAverages> parseLoadAverages(std::string_view text)
{
    TextScanner words(text);
    const auto real = [&words] {
        std::string_view word;
        return words.word(&word) ? parseReal(word) : std::nullopt;
    };
    const auto one = real();
    const auto five = real();
    const auto fifteen = real();
    uint64 running = 0;
    uint64 threads = 0;
    if (!one || !five || !fifteen || !words.number(&running) || !words.literal("/") || !words.number(&threads))
        return std::nullopt;
    return LoadAverages{*one, *five, *fifteen, running, threads};
}

} // namespace Kivo::Inventory
