// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor cores: lists of their numbers, their times, what they are.
#include "Inventory/detail/CoreParser_p.h"

namespace Kivo::Inventory {

namespace {

struct Part {
    uint32 implementer;
    uint32 part;
    const char* name;
};

constexpr uint32 ARM = 0x41;

constexpr Part PARTS[] = {
    {ARM, 0xC05, "Cortex-A5"},   {ARM, 0xC07, "Cortex-A7"},   {ARM, 0xC08, "Cortex-A8"},
    {ARM, 0xC09, "Cortex-A9"},   {ARM, 0xC0D, "Cortex-A17"},  {ARM, 0xC0E, "Cortex-A17"},
    {ARM, 0xC0F, "Cortex-A15"},  {ARM, 0xD01, "Cortex-A32"},  {ARM, 0xD02, "Cortex-A34"},
    {ARM, 0xD03, "Cortex-A53"},  {ARM, 0xD04, "Cortex-A35"},  {ARM, 0xD05, "Cortex-A55"},
    {ARM, 0xD06, "Cortex-A65"},  {ARM, 0xD07, "Cortex-A57"},  {ARM, 0xD08, "Cortex-A72"},
    {ARM, 0xD09, "Cortex-A73"},  {ARM, 0xD0A, "Cortex-A75"},  {ARM, 0xD0B, "Cortex-A76"},
    {ARM, 0xD0C, "Neoverse-N1"}, {ARM, 0xD0D, "Cortex-A77"},  {ARM, 0xD0E, "Cortex-A76AE"},
    {ARM, 0xD40, "Neoverse-V1"}, {ARM, 0xD41, "Cortex-A78"},  {ARM, 0xD42, "Cortex-A78AE"},
    {ARM, 0xD44, "Cortex-X1"},   {ARM, 0xD46, "Cortex-A510"}, {ARM, 0xD47, "Cortex-A710"},
    {ARM, 0xD49, "Neoverse-N2"}, {ARM, 0xD4B, "Cortex-A78C"}, {ARM, 0xD4D, "Cortex-A715"},
    {ARM, 0xD4F, "Neoverse-V2"}, {ARM, 0xD80, "Cortex-A520"}, {ARM, 0xD81, "Cortex-A720"},
};

/// 0x41 or 65; the kernel writes both.
std::optional<uint32> parseIdentifier(std::string_view text)
{
    return text.starts_with("0x") ? wholeNumber<uint32>(text.substr(2), 16) : wholeNumber<uint32>(text);
}

std::string modelOf(std::string_view implementer, std::string_view part)
{
    const auto implementerId = parseIdentifier(implementer);
    const auto partId = parseIdentifier(part);
    for (const Part& known : PARTS)
        if (known.implementer == implementerId && known.part == partId)
            return known.name;
    return part.empty() ? std::string() : "implementer " + std::string(implementer) + ", part " + std::string(part);
}

uint64 add(uint64 left, uint64 right) { return left > ~right ? ~uint64{0} : left + right; }

// user nice system idle iowait irq softirq steal guest guest_nice; what guests take is part of user and nice.
std::optional<CoreTimes> parseTimes(TextScanner words)
{
    enum { USER, NICE, SYSTEM, IDLE, IO_WAIT, IRQ, SOFT_IRQ, STEAL, COUNT };
    uint64 ticks[COUNT] = {};
    std::size_t count = 0;
    for (std::string_view word; count < COUNT && words.word(&word); ++count) {
        const auto number = wholeNumber<uint64>(word);
        if (!number)
            return std::nullopt;
        ticks[count] = *number;
    }
    if (count <= IDLE)
        return std::nullopt;
    CoreTimes times{0, add(ticks[IDLE], ticks[IO_WAIT])};
    for (const int kind : {USER, NICE, SYSTEM, IRQ, SOFT_IRQ, STEAL})
        times.busy = add(times.busy, ticks[kind]);
    return times;
}

} // namespace

std::optional<CoreRanges> parseCoreList(std::string_view text)
{
    CoreRanges ranges;
    TextScanner pieces(text);
    for (std::string_view piece; pieces.field(&piece, ", \t\n");) {
        const std::size_t dash = piece.find('-');
        const auto first = wholeNumber<uint32>(piece.substr(0, dash));
        const auto last = dash == std::string_view::npos ? first : wholeNumber<uint32>(piece.substr(dash + 1));
        if (!first || !last || *last < *first)
            return std::nullopt;
        ranges.push_back({*first, *last});
    }
    return ranges;
}

Real CoreTimes::seconds(uint64 ticks) { return {static_cast<float64>(ticks) / 100, 2}; }

std::optional<Real> CoreTimes::usePercent() const
{
    const float64 all = static_cast<float64>(busy) + static_cast<float64>(idle);
    if (all == 0)
        return std::nullopt;
    return Real{100 * static_cast<float64>(busy) / all, 1};
}

// cpu  232 0 932 1628 0 0 0 0 0 0
// cpu0 180 0 640 582 0 0 0 0 0 0
// btime 1795253408
SystemStat parseStat(std::string_view text, std::size_t mostCores)
{
    SystemStat stat;
    TextScanner lines(text);
    for (std::string_view line; lines.line(&line);) {
        TextScanner words(line);
        int64 seconds = 0;
        if (words.literal("btime ") && words.number(&seconds))
            stat.bootTime = seconds;
        if (!words.literal("cpu"))
            continue;
        if (words.rest().starts_with(' ')) {
            stat.all = parseTimes(words);
            continue;
        }
        uint32 number = 0;
        const bool hasNumber = words.number(&number);
        const auto times = parseTimes(words);
        if (hasNumber && times && stat.cores.size() < mostCores)
            stat.cores.push_back({number, *times});
    }
    return stat;
}

// processor	: 0                    processor	: 0
// model name	: AMD EPYC             BogoMIPS	: 125.00
// cpu MHz		: 2596.122             CPU implementer	: 0x41
// physical id	: 0                    CPU part	: 0xd08
std::vector<CoreInfo> parseCpuinfo(std::string_view text, std::size_t mostCores)
{
    std::vector<CoreInfo> cores;
    std::string_view implementer;
    TextScanner lines(text);
    for (std::string_view line; lines.line(&line);) {
        TextScanner row(line);
        std::string_view name;
        if (!row.until(':', &name))
            continue;
        name = trimmed(name);
        const std::string_view value = trimmed(row.rest()).substr(0, 256);
        const auto number = wholeNumber<uint32>(value);
        if (name == "processor" && number) {
            if (cores.size() == mostCores)
                break;
            cores.push_back({*number, {}, {}, {}});
            implementer = {};
        }
        if (cores.empty())
            continue;
        CoreInfo& core = cores.back();
        if (name == "model name")
            core.model = value;
        else if (name == "cpu MHz")
            core.megahertz = parseReal(value);
        else if (name == "physical id")
            core.packageId = number;
        else if (name == "CPU implementer")
            implementer = value;
        else if (name == "CPU part")
            core.model = modelOf(implementer, value);
    }
    return cores;
}

} // namespace Kivo::Inventory
