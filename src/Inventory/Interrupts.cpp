// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interrupts and how often they came.
#include "Inventory/Interrupts.h"

#include "Inventory/detail/InterruptsParser_p.h"
#include "Inventory/detail/Source_p.h"

namespace Kivo::Inventory {

namespace {

constexpr const char* PATH = "/proc/interrupts";

constexpr Column<Interrupt> COLUMNS[] = {
    column<&Interrupt::name>(
        {"name", "interrupt", "Number or name of the interrupt", Unit::NONE, Align::LEFT, IDENTITY}),
    column<&Interrupt::count>({"count", "count", "Times that it came since the start, on the cores that are online",
                               Unit::NONE, Align::RIGHT, COUNTER}),
    column<&Interrupt::description>({"description", "description", "Controller, kind and devices of the interrupt",
                                     Unit::NONE, Align::LEFT, LABEL}),
};

} // namespace

template <>
std::span<const Column<Interrupt>> columns<Interrupt>()
{
    return COLUMNS;
}

Listing<Interrupt> listInterrupts()
{
    Listing<Interrupt> listing;
    Source source("interrupts", &listing.problems);
    const auto text = source.contents(PATH);
    listing.known = text.has_value();
    InterruptsParser rows(text ? std::string_view(*text) : std::string_view());
    for (InterruptRow row; rows.next(&row) && source.hasRoomAfter(listing.records.size(), PATH);)
        listing.records.push_back({std::string(row.label.substr(0, Source::LONGEST_TEXT)), row.count,
                                   row.description.substr(0, Source::LONGEST_TEXT)});
    return listing;
}

} // namespace Kivo::Inventory
