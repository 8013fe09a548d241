// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The sources that processor and cores share.
#include "Inventory/detail/CoreSources_p.h"

#include <cerrno>

namespace Kivo::Inventory {

namespace {

std::string pathOf(const std::string& name) { return "/sys/devices/system/cpu/" + name; }

} // namespace

std::vector<FrequencyPolicy> readFrequencyPolicies(Source& source)
{
    std::vector<FrequencyPolicy> policies;
    for (const std::string& name : source.names(pathOf("cpufreq")).value_or(std::vector<std::string>())) {
        if (!name.starts_with("policy"))
            continue;
        const std::string directory = pathOf("cpufreq/" + name + "/");
        // Without an online core a policy is asleep and refuses every question.
        const Source::Silent asleep = {EBUSY, EINVAL, ENODEV};
        const auto cores = source.text(directory + "related_cpus", asleep);
        const auto ranges = cores ? parseCoreList(*cores) : std::nullopt;
        policies.push_back({ranges.value_or(CoreRanges()), source.number(directory + "scaling_cur_freq", 10, asleep),
                            source.number(directory + "cpuinfo_max_freq", 10, asleep),
                            source.text(directory + "scaling_governor", asleep)});
    }
    return policies;
}

std::optional<CoreRanges> readCoreList(Source& source, const char* name)
{
    return source.parsed(pathOf(name), parseCoreList);
}

std::optional<SystemStat> readStat(Source& source)
{
    const auto text = source.contents("/proc/stat");
    return text ? std::optional(parseStat(*text, Source::MOST_ENTRIES)) : std::nullopt;
}

std::vector<CoreInfo> readCpuinfo(Source& source)
{
    const auto text = source.contents("/proc/cpuinfo");
    return text ? parseCpuinfo(*text, Source::MOST_ENTRIES) : std::vector<CoreInfo>();
}

} // namespace Kivo::Inventory
