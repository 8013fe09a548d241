// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Column tables: what a record's fields are called, and how they are read.
#pragma once

#include "Inventory/Value.h"

#include <span>

namespace Kivo::Inventory {

/// What a column's numbers count.
enum class Unit : uint8 {
    NONE,
    BYTES,
    KIBIBYTES,
    SECONDS,
    MEGABITS_PER_SECOND,
    MEGAHERTZ,
    CELSIUS,
    VOLTS,
    REVOLUTIONS_PER_MINUTE,
    PERCENT,
};

/// "KiB", "°C"; empty for Unit::NONE.
[[nodiscard]] K7INVENTORY_API const char* symbolOf(Unit unit);

enum class Align : uint8 { LEFT, RIGHT };

/// What else is to be known of a column; several may be joined with |.
enum Trait : uint16 {
    PLAIN = 0,
    IDENTITY = 1 << 0,  ///< tells the records of a list apart
    VOLATILE = 1 << 1,  ///< changes by itself from one look to the next
    DETAIL = 1 << 3,    ///< left out of the usual table, for want of room
    LIVE_ONLY = 1 << 4, ///< only a running kernel can tell, or only a recent one can write it into a file
    LABEL = 1 << 5,     ///< says in words what a record is, and stands beside its rates

    /// Only grows, so that its growth per second is a rate; volatile too.
    COUNTER = 1 << 2 | VOLATILE,
};

/// What a column's texts give away of their owner, so that a capture can replace it.
enum class Secret : uint8 { NONE, MAC_ADDRESS, IP_ADDRESS, SERIAL_NUMBER, HOST_NAME, COMMAND_LINE };

/// What is known of a column without its records.
struct ColumnInfo {
    const char* key;     ///< in JSON, in scripts and for -o: "mem_total_kib"
    const char* heading; ///< above a table: "total"
    const char* help;    ///< one sentence, without a full stop
    Unit unit = Unit::NONE;
    Align align = Align::LEFT;
    uint16 traits = PLAIN;
    Secret secret = Secret::NONE;
    std::vector<ColumnInfo> (*nested)() = nullptr; ///< the columns of the records that the column holds, if it does

    /// Whether the column has a trait, all of it where it is a joined one.
    [[nodiscard]] constexpr bool has(Trait trait) const { return (traits & trait) == trait; }
};

/// A column of the records of one type.
template <class Record>
struct Column {
    ColumnInfo info;
    Value (*read)(const Record&);
};

/// Read one member of a record as a column does.
template <auto Member, class Record>
Value readMember(const Record& record)
{
    return Value(record.*Member);
}

template <class Member>
struct MemberOf;

template <class R, class T>
struct MemberOf<T R::*> {
    using Record = R;
};

/// The column of one member of a record: column<&Memory::total>({"mem_total_kib", "total", "..."}).
template <auto Member>
constexpr auto column(ColumnInfo info)
{
    using Record = typename MemberOf<decltype(Member)>::Record;
    return Column<Record>{info, &readMember<Member, Record>};
}

/// The column table of a record; each subject's header declares its own.
template <class Record>
[[nodiscard]] std::span<const Column<Record>> columns();

/// The column table of a record without the records' type.
template <class Record>
[[nodiscard]] std::vector<ColumnInfo> columnInfos()
{
    std::vector<ColumnInfo> infos;
    for (const Column<Record>& column : columns<Record>())
        infos.push_back(column.info);
    return infos;
}

/// A record as a nested value of another one.
template <class Record>
[[nodiscard]] Row rowOf(const Record& record)
{
    Row row;
    for (const Column<Record>& column : columns<Record>())
        row.push_back({column.info.key, column.read(record)});
    return row;
}

/// Records as a nested list of another one.
template <class Record>
[[nodiscard]] List rowsOf(const std::vector<Record>& records)
{
    List rows;
    for (const Record& record : records)
        rows.emplace_back(rowOf(record));
    return rows;
}

} // namespace Kivo::Inventory
