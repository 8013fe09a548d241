// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The cores of the processor.
#include "Inventory/Core.h"

#include "Inventory/detail/CoreSources_p.h"

#include <map>
#include <set>

namespace Kivo::Inventory {

namespace {

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, Unit unit, uint16 traits)
{
    return {key, heading, help, unit, Align::RIGHT, traits};
}

constexpr Column<Core> COLUMNS[] = {
    column<&Core::number>(number("number", "core", "Number of the core", Unit::NONE, IDENTITY)),
    column<&Core::online>({"online", "online", "Whether the core runs"}),
    column<&Core::model>({"model", "model", "Model of the core", Unit::NONE, Align::LEFT, DETAIL}),
    column<&Core::megahertz>(number("frequency_mhz", "frequency", "Frequency now", Unit::MEGAHERTZ, VOLATILE)),
    column<&Core::largestMegahertz>(
        number("max_frequency_mhz", "max. frequency", "Highest frequency of the core", Unit::MEGAHERTZ, PLAIN)),
    column<&Core::usePercent>(
        number("use_percent", "use", "Part of the time since the start that was not idle", Unit::PERCENT, VOLATILE)),
    column<&Core::busySeconds>(
        number("busy_seconds", "busy", "Time since the start that was not idle", Unit::SECONDS, COUNTER)),
    column<&Core::idleSeconds>(
        number("idle_seconds", "idle", "Time since the start that was idle", Unit::SECONDS, COUNTER)),
};

/// The cores so far; each source adds what it knows.
class Cores {
public:
    /// @return the core of that number, made when it is not there yet; null when there are too many
    Core* at(uint32 number)
    {
        const auto found = _cores.find(number);
        if (found != _cores.end())
            return &found->second;
        if (_cores.size() == Source::MOST_ENTRIES)
            return nullptr;
        Core core;
        core.number = number;
        return &_cores.emplace(number, std::move(core)).first->second;
    }

    void add(const CoreRanges& ranges)
    {
        for (const CoreRange& range : ranges)
            for (uint64 number = range.first; number <= range.last; ++number)
                if (!at(static_cast<uint32>(number)))
                    return;
    }

    /// Hand the cores of @p ranges that are there to @p change.
    template <class Change>
    void each(const CoreRanges& ranges, Change&& change)
    {
        for (const CoreRange& range : ranges)
            for (auto core = _cores.lower_bound(range.first); core != _cores.end() && core->first <= range.last; ++core)
                change(core->second);
    }

    [[nodiscard]] std::set<uint32> numbers() const
    {
        std::set<uint32> numbers;
        for (const auto& [number, core] : _cores)
            numbers.insert(numbers.end(), number);
        return numbers;
    }

    [[nodiscard]] std::vector<Core> sorted()
    {
        std::vector<Core> cores;
        cores.reserve(_cores.size());
        for (auto& [number, core] : _cores)
            cores.push_back(std::move(core));
        return cores;
    }

private:
    std::map<uint32, Core> _cores;
};

void addTimes(const SystemStat& stat, Cores* cores)
{
    for (const SystemStat::Core& row : stat.cores) {
        Core* const core = cores->at(row.number);
        if (!core)
            continue;
        core->usePercent = row.times.usePercent();
        core->busySeconds = CoreTimes::seconds(row.times.busy);
        core->idleSeconds = CoreTimes::seconds(row.times.idle);
    }
}

void addModels(const std::vector<CoreInfo>& infos, Cores* cores)
{
    for (const CoreInfo& info : infos) {
        Core* const core = cores->at(info.number);
        if (!core)
            continue;
        core->megahertz = info.megahertz;
        if (!info.model.empty())
            core->model = info.model;
    }
}

void addFrequency(const FrequencyPolicy& policy, Core* core)
{
    if (policy.current && core->online.value_or(true))
        core->megahertz = thousandths(*policy.current);
    if (policy.largest)
        core->largestMegahertz = thousandths(*policy.largest);
}

/// A core follows the first policy that names it, so that no tree can make this slow.
void addFrequencies(const std::vector<FrequencyPolicy>& policies, Cores* cores)
{
    std::set<uint32> rest = cores->numbers();
    for (const FrequencyPolicy& policy : policies)
        for (const CoreRange& range : policy.cores)
            for (auto number = rest.lower_bound(range.first); number != rest.end() && *number <= range.last;
                 number = rest.erase(number))
                addFrequency(policy, cores->at(*number));
}

} // namespace

template <>
std::span<const Column<Core>> columns<Core>()
{
    return COLUMNS;
}

Listing<Core> listCores()
{
    Listing<Core> listing;
    Source source("cores", &listing.problems);
    Cores cores;
    const auto present = readCoreList(source, "present");
    const auto online = readCoreList(source, "online");
    const auto stat = readStat(source);
    listing.known = present || stat;
    if (present)
        cores.add(*present);
    if (stat)
        addTimes(*stat, &cores);
    addModels(readCpuinfo(source), &cores);
    if (online) {
        constexpr uint32 LAST = ~uint32{0};
        cores.each(CoreRanges{{0, LAST}}, [](Core& core) { core.online = false; });
        cores.each(*online, [](Core& core) { core.online = true; });
    }
    addFrequencies(readFrequencyPolicies(source), &cores);
    listing.records = cores.sorted();
    static_cast<void>(source.hasRoomAfter(listing.records.size(), "/sys/devices/system/cpu"));
    return listing;
}

} // namespace Kivo::Inventory
