// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every subject of the inventory, in the order of a report.
#include "Inventory/Section.h"

#include "Inventory/BlockDevice.h"
#include "Inventory/Clock.h"
#include "Inventory/Core.h"
#include "Inventory/Host.h"
#include "Inventory/Interrupts.h"
#include "Inventory/Memory.h"
#include "Inventory/NameServers.h"
#include "Inventory/NetworkInterface.h"
#include "Inventory/PciFunction.h"
#include "Inventory/Pressure.h"
#include "Inventory/Process.h"
#include "Inventory/Processor.h"
#include "Inventory/Route.h"
#include "Inventory/Sensor.h"

#include <algorithm>

namespace Kivo::Inventory {

namespace {

template <class Record>
constexpr Section section(const char* key, const char* heading, const char* help, Reading<Record> (*)(),
                          Collected (*collect)())
{
    return {key, heading, help, Shape::RECORD, &columnInfos<Record>, collect};
}

template <class Record>
constexpr Section section(const char* key, const char* heading, const char* help, Listing<Record> (*)(),
                          Collected (*collect)())
{
    return {key, heading, help, Shape::LIST, &columnInfos<Record>, collect};
}

/// The section of what @p Read gives: section<readMemory>("memory", "Memory", "...").
template <auto Read>
constexpr Section section(const char* key, const char* heading, const char* help)
{
    return section(key, heading, help, Read, [] { return collected(Read()); });
}

constexpr Section onRequest(Section section)
{
    section.onRequest = true;
    return section;
}

constexpr Section busiest(std::size_t count, Section section)
{
    section.busiest = count;
    return section;
}

constexpr Section SECTIONS[] = {
    section<readHost>("host", "Host", "The machine as a whole: its names, its kernel, its load"),
    section<readClock>("clock", "Clock", "The system clock, the time zone and the hardware clock"),
    section<listPressures>("pressure", "Pressure", "How much work waits for processor, memory and disks"),
    section<readMemory>("memory", "Memory", "Main memory and swap, and what holds them"),
    section<readProcessor>("processor", "Processor", "The processor as a whole and its use since the start"),
    section<listCores>("cores", "Cores", "The cores of the processor, their frequencies and their use"),
    busiest(5, section<listInterrupts>("interrupts", "Interrupts", "Interrupts and how often they came")),
    section<listPciFunctions>("pci_functions", "PCI functions", "Functions of PCI devices, their drivers and links"),
    section<listBlockDevices>("block_devices", "Block devices", "Disks and other block devices, and their traffic"),
    section<listNetworkInterfaces>(SectionKey::NETWORK_INTERFACES, "Network interfaces",
                                   "Links, addresses and traffic"),
    section<listRoutes>("routes", "Routes", "Where packets are sent"),
    section<readNameServers>(SectionKey::NAME_SERVERS, "Name servers",
                             "Name servers and the leases that they come with"),
    section<listSensors>("sensors", "Sensors", "Temperatures, fans, voltages and currents, with their limits"),
    onRequest(section<listProcesses>(SectionKey::PROCESSES, "Processes", "Processes and what they use of the machine")),
};

} // namespace

std::span<const Section> sections() { return SECTIONS; }

const Section* findSection(std::string_view key)
{
    const auto* const found = std::find_if(std::begin(SECTIONS), std::end(SECTIONS),
                                           [&](const Section& section) { return section.key == key; });
    return found == std::end(SECTIONS) ? nullptr : found;
}

} // namespace Kivo::Inventory
