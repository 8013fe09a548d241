// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interrupts and how often they came.
#include "Inventory/Interrupts.h"

#include "Inventory/detail/Source_p.h"
#include "OS/System/CPU.h"

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
    std::vector<K7SystemUtil::CPU::Interrupt> rows;
    listing.known = K7SystemUtil::CPU::readInterrupts(&rows);
    if (!listing.known)
        source.noteFailure();
    for (const auto& row : rows) {
        if (!source.hasRoomAfter(listing.records.size(), PATH))
            break;
        listing.records.push_back(
            {row.label.substr(0, Source::LONGEST_TEXT), row.total, row.description.substr(0, Source::LONGEST_TEXT)});
    }
    return listing;
}

} // namespace Kivo::Inventory
