// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The processor as a whole.
#include "Inventory/Processor.h"

#include "Inventory/detail/CoreSources_p.h"

#include <set>

namespace Kivo::Inventory {

namespace {

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, Unit unit = Unit::NONE,
                            uint16 traits = PLAIN)
{
    return {key, heading, help, unit, Align::RIGHT, traits};
}

constexpr Column<Processor> COLUMNS[] = {
    column<&Processor::model>({"model", "model", "Model of the cores, each one once"}),
    column<&Processor::coreCount>(number("core_count", "cores", "Cores that are present")),
    column<&Processor::onlineCount>(number("online_count", "online", "Cores that are online")),
    column<&Processor::packageCount>(number("package_count", "packages", "Chips that the cores are on")),
    column<&Processor::largestMegahertz>(
        number("max_frequency_mhz", "max. frequency", "Highest frequency of the fastest core", Unit::MEGAHERTZ)),
    column<&Processor::governor>({"governor", "governor", "Rule by which the kernel chooses the frequency"}),
    column<&Processor::usePercent>(
        number("use_percent", "use", "Part of the time since the start that was not idle", Unit::PERCENT, VOLATILE)),
    column<&Processor::busySeconds>(
        number("busy_seconds", "busy", "Time that the cores together were busy", Unit::SECONDS, COUNTER | DETAIL)),
    column<&Processor::idleSeconds>(
        number("idle_seconds", "idle", "Time that the cores together were idle", Unit::SECONDS, COUNTER | DETAIL)),
};

std::optional<uint64> countOf(const std::optional<CoreRanges>& ranges)
{
    if (!ranges)
        return std::nullopt;
    uint64 count = 0;
    for (const CoreRange& range : *ranges)
        count += uint64{range.last} - range.first + 1;
    return count;
}

std::optional<std::string> joined(const std::set<std::string>& texts)
{
    if (texts.empty())
        return std::nullopt;
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : " + ") + text;
    if (result.size() > Source::LONGEST_TEXT)
        result.replace(Source::LONGEST_TEXT - 3, std::string::npos, "...");
    return result;
}

void readModel(Source& source, Processor* processor)
{
    std::set<std::string> models;
    std::set<uint32> packages;
    for (const CoreInfo& core : readCpuinfo(source)) {
        if (!core.model.empty())
            models.insert(core.model);
        if (core.packageId)
            packages.insert(*core.packageId);
    }
    processor->model = joined(models);
    if (!packages.empty())
        processor->packageCount = packages.size();
}

void readFrequency(Source& source, Processor* processor)
{
    std::set<std::string> governors;
    int64 largest = 0;
    for (const FrequencyPolicy& policy : readFrequencyPolicies(source)) {
        largest = std::max(largest, policy.largest.value_or(0));
        if (policy.governor)
            governors.insert(*policy.governor);
    }
    if (largest > 0)
        processor->largestMegahertz = thousandths(largest);
    processor->governor = joined(governors);
}

} // namespace

template <>
std::span<const Column<Processor>> columns<Processor>()
{
    return COLUMNS;
}

Reading<Processor> readProcessor()
{
    Reading<Processor> reading;
    Source source("processor", &reading.problems);
    Processor& processor = reading.record;
    readModel(source, &processor);
    readFrequency(source, &processor);
    processor.coreCount = countOf(readCoreList(source, "present"));
    processor.onlineCount = countOf(readCoreList(source, "online"));
    const auto stat = readStat(source);
    if (stat && stat->all) {
        processor.usePercent = stat->all->usePercent();
        processor.busySeconds = CoreTimes::seconds(stat->all->busy);
        processor.idleSeconds = CoreTimes::seconds(stat->all->idle);
    }
    return reading;
}

} // namespace Kivo::Inventory
