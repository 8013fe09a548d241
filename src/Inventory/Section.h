// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every subject of the inventory, for readers that go by the column tables alone.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <span>
#include <string_view>

namespace Kivo::Inventory {

/// What a section holds: one record, or a list of them.
enum class Shape : uint8 { RECORD, LIST };

/// The values of a section's records, a row per record, each in the order of the columns.
struct Collected {
    bool known = false; ///< as Listing::known; always true of a RECORD
    std::vector<std::vector<Value>> rows;
    std::vector<Problem> problems;
};

/// One subject of the inventory.
struct Section {
    const char* key;     ///< "network_interfaces"
    const char* heading; ///< "Network interfaces"
    const char* help;    ///< one sentence, without a full stop
    Shape shape;
    std::vector<ColumnInfo> (*columns)();
    Collected (*collect)();  ///< reads the machine, or the captured tree, now
    bool onRequest = false;  ///< left out of a report that does not ask for it by name
    std::size_t busiest = 0; ///< how many records the usual text shows, those of the largest first counter; 0 for all
};

/// @{ Keys of the sections that a reader asks for by name.
namespace SectionKey {
inline constexpr const char* NETWORK_INTERFACES = "network_interfaces";
inline constexpr const char* NAME_SERVERS = "name_servers";
inline constexpr const char* PROCESSES = "processes";
} // namespace SectionKey
/// @}

/// Every section, in the order of a report.
[[nodiscard]] K7INVENTORY_API std::span<const Section> sections();

/// Find a section. @return the section of that key, null when there is none
[[nodiscard]] K7INVENTORY_API const Section* findSection(std::string_view key);

/// The values of one record in the order of its columns.
template <class Record>
[[nodiscard]] std::vector<Value> valuesOf(const Record& record)
{
    std::vector<Value> values;
    for (const Column<Record>& column : columns<Record>())
        values.push_back(column.read(record));
    return values;
}

/// @{ What was read of a subject, without its type.
template <class Record>
[[nodiscard]] Collected collected(Reading<Record> reading)
{
    Collected result{true, {}, std::move(reading.problems)};
    result.rows.push_back(valuesOf(reading.record));
    return result;
}

template <class Record>
[[nodiscard]] Collected collected(Listing<Record> listing)
{
    Collected result{listing.known, {}, std::move(listing.problems)};
    result.rows.reserve(listing.records.size());
    for (const Record& record : listing.records)
        result.rows.push_back(valuesOf(record));
    return result;
}
/// @}

} // namespace Kivo::Inventory
