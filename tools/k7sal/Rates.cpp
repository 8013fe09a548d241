// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Growth per second of whatever counts.
#include "Rates.h"

#include "Render.h"

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;

namespace {

constexpr int DECIMALS = 1;
constexpr float64 PERCENT = 100;

/// "busy_seconds" without "_seconds".
std::string withoutUnit(std::string key)
{
    constexpr std::string_view UNIT = "_seconds";
    if (key.ends_with(UNIT))
        key.resize(key.size() - UNIT.size());
    return key;
}

Value rate(std::optional<float64> before, std::optional<float64> now, float64 seconds, bool isPart)
{
    if (!before || !now || *now < *before || seconds <= 0)
        return {};
    return Real{(*now - *before) / seconds * (isPart ? PERCENT : 1), DECIMALS};
}

} // namespace

const char* Rates::keep(std::string text) { return _texts.emplace_back(std::move(text)).c_str(); }

void Rates::addCounter(Plan* plan, const Counter& counter, const ColumnInfo& column, std::string key,
                       const std::string& heading)
{
    ColumnInfo info = column;
    info.key = keep(counter.isPart ? withoutUnit(std::move(key)) + "_percent" : key + "_per_s");
    info.heading = counter.isPart ? keep(heading) : keep(heading + "/s");
    info.unit = counter.isPart ? Unit::PERCENT : column.unit;
    info.align = Align::RIGHT;
    plan->columns.push_back(info);
    plan->counters.push_back(counter);
}

const Rates::Plan& Rates::planOf(const Sheet& sheet)
{
    const auto [found, isNew] = _plans.try_emplace(sheet.key);
    Plan& plan = found->second;
    if (!isNew)
        return plan;
    for (std::size_t i = 0; i < sheet.columns.size(); ++i)
        if (sheet.columns[i].has(IDENTITY) || sheet.columns[i].has(LABEL)) {
            plan.labels.push_back(i);
            plan.columns.push_back(sheet.columns[i]);
        }
    for (std::size_t i = 0; i < sheet.columns.size(); ++i) {
        const ColumnInfo& column = sheet.columns[i];
        if (column.has(COUNTER))
            addCounter(&plan, {i, std::nullopt, column.unit == Unit::SECONDS}, column, column.key, column.heading);
        const std::vector<ColumnInfo> nested = column.nested ? column.nested() : std::vector<ColumnInfo>();
        for (std::size_t field = 0; field < nested.size(); ++field)
            if (nested[field].has(COUNTER))
                addCounter(&plan, {i, field, false}, nested[field], std::string(column.key) + "_" + nested[field].key,
                           field == 0 ? column.heading : nested[field].heading);
    }
    return plan;
}

Document Rates::update(const Document& now, Clock::time_point time)
{
    const float64 seconds = _lastTime ? std::chrono::duration<float64>(time - *_lastTime).count() : 0;
    _lastTime = time;
    Document rates;
    for (const Sheet& sheet : now) {
        const Plan& plan = planOf(sheet);
        if (plan.counters.empty())
            continue;
        Sheet result{sheet.key, sheet.heading, sheet.shape, sheet.busiest, plan.columns, {}};
        result.data.known = sheet.data.known;
        result.data.problems = sheet.data.problems;
        CountsByName counted;
        const CountsByName& before = _last[sheet.key];
        for (const std::vector<Value>& row : sheet.data.rows) {
            std::string name;
            std::vector<Value> values;
            for (const std::size_t label : plan.labels) {
                if (sheet.columns[label].has(IDENTITY))
                    name += cellText(row[label], sheet.columns[label]) + '\n';
                values.push_back(row[label]);
            }
            const auto old = before.find(name);
            Counts counts;
            for (const Counter& counter : plan.counters) {
                const Row* const nested = counter.field ? row[counter.column].as<Row>() : nullptr;
                counts.push_back(!counter.field                              ? row[counter.column].number()
                                 : nested && *counter.field < nested->size() ? (*nested)[*counter.field].value.number()
                                                                             : std::nullopt);
                values.push_back(old == before.end()
                                     ? Value()
                                     : rate(old->second[counts.size() - 1], counts.back(), seconds, counter.isPart));
            }
            counted.insert_or_assign(std::move(name), std::move(counts));
            result.data.rows.push_back(std::move(values));
        }
        _last[sheet.key] = std::move(counted);
        rates.push_back(std::move(result));
    }
    return rates;
}

} // namespace K7Tool
