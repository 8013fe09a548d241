// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The machine as a whole: its names, its kernel, its load.
#include "Inventory/Host.h"

#include "Inventory/detail/HostParser_p.h"
#include "Inventory/detail/Source_p.h"

#include <sys/utsname.h>

namespace Kivo::Inventory {

namespace {

constexpr std::size_t LONGEST_LINE = 4096;

constexpr ColumnInfo load(const char* key, const char* heading, const char* help)
{
    return {key, heading, help, Unit::NONE, Align::RIGHT, VOLATILE};
}

constexpr ColumnInfo text(const char* key, const char* heading, const char* help, uint16 traits = PLAIN,
                          Secret secret = Secret::NONE)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits, secret};
}

constexpr Column<Host> COLUMNS[] = {
    column<&Host::name>(text("name", "name", "Name of the host", PLAIN, Secret::HOST_NAME)),
    column<&Host::model>(text("model", "model", "Model that the device tree or the firmware tells")),
    column<&Host::compatible>(
        text("compatible", "compatible", "Names of the board in the device tree, the most exact one first", DETAIL)),
    column<&Host::serialNumber>(text("serial_number", "serial number", "Serial number that the device tree tells",
                                     PLAIN, Secret::SERIAL_NUMBER)),
    column<&Host::osName>(text("os_name", "system", "Name and version of the operating system")),
    column<&Host::kernelVersion>(text("kernel_version", "kernel", "Numbers of the kernel's version")),
    column<&Host::kernelRelease>(text("kernel_release", "release", "Release of the kernel as modules are built for")),
    column<&Host::kernelText>(text("kernel_text", "kernel text", "Kernel with its compiler and its build", DETAIL)),
    column<&Host::architecture>(
        text("architecture", "architecture", "Instruction set that the kernel runs", LIVE_ONLY)),
    column<&Host::commandLine>(
        text("command_line", "command line", "What the kernel was started with", DETAIL, Secret::COMMAND_LINE)),
    column<&Host::uptime>({"uptime_seconds", "uptime", "Time since the start", Unit::SECONDS, Align::RIGHT, VOLATILE}),
    column<&Host::load1>(load("load_1", "load 1 min", "Threads that run or wait for a disk, averaged over 1 minute")),
    column<&Host::load5>(load("load_5", "load 5 min", "Threads that run or wait for a disk, averaged over 5 minutes")),
    column<&Host::load15>(
        load("load_15", "load 15 min", "Threads that run or wait for a disk, averaged over 15 minutes")),
    column<&Host::threadsRunning>(load("threads_running", "running", "Threads that run or are ready to")),
    column<&Host::threads>(load("threads_total", "threads", "Threads that exist")),
};

/// The first text of the first of these properties that is there.
std::optional<std::vector<std::string>> deviceTreeTexts(Source& source, const char* name)
{
    for (const char* directory : {"/sys/firmware/devicetree/base/", "/proc/device-tree/"}) {
        const auto bytes = source.text(std::string(directory) + name, {}, LONGEST_LINE);
        if (!bytes)
            continue;
        auto texts = parseTextList(*bytes);
        if (!texts.empty())
            return texts;
    }
    return std::nullopt;
}

std::optional<std::string> deviceTreeText(Source& source, const char* name)
{
    const auto texts = deviceTreeTexts(source, name);
    return texts ? std::optional(texts->front()) : std::nullopt;
}

std::optional<std::string> firmwareModel(Source& source)
{
    const auto vendor = source.text("/sys/class/dmi/id/sys_vendor");
    const auto product = source.text("/sys/class/dmi/id/product_name");
    if (vendor && product)
        return *vendor + " " + *product;
    return product ? product : vendor;
}

std::optional<std::string> osName(Source& source)
{
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"})
        if (const auto text = source.text(path, {}, LONGEST_LINE))
            if (auto name = parseOsRelease(*text, "PRETTY_NAME"))
                return name;
    return std::nullopt;
}

std::optional<std::string> architecture(Source& source)
{
    if (auto name = source.text("/proc/sys/kernel/arch"))
        return name;
    utsname system{};
    if (!isLive() || ::uname(&system) != 0)
        return std::nullopt;
    return system.machine;
}

void readKernel(Source& source, Host* host)
{
    host->kernelText = source.text("/proc/version", {}, LONGEST_LINE);
    host->kernelRelease = source.text("/proc/sys/kernel/osrelease");
    if (!host->kernelRelease && host->kernelText) {
        const std::string_view release = parseKernelRelease(*host->kernelText);
        if (!release.empty())
            host->kernelRelease = std::string(release.substr(0, Source::LONGEST_TEXT));
    }
    if (!host->kernelRelease)
        return;
    const std::string_view numbers = parseKernelNumbers(*host->kernelRelease);
    if (!numbers.empty())
        host->kernelVersion = std::string(numbers);
}

void readLoad(Source& source, Host* host)
{
    // 14.42 16.29
    host->uptime =
        source.parsed("/proc/uptime", [](std::string_view text) { return parseReal(text.substr(0, text.find(' '))); });
    const auto loads = source.parsed("/proc/loadavg", parseLoadAverages);
    if (!loads)
        return;
    host->load1 = loads->one;
    host->load5 = loads->five;
    host->load15 = loads->fifteen;
    host->threadsRunning = loads->threadsRunning;
    host->threads = loads->threads;
}

} // namespace

template <>
std::span<const Column<Host>> columns<Host>()
{
    return COLUMNS;
}

Reading<Host> readHost()
{
    Reading<Host> reading;
    Source source("host", &reading.problems);
    Host& host = reading.record;
    host.name = source.text("/proc/sys/kernel/hostname");
    host.model = deviceTreeText(source, "model");
    if (!host.model)
        host.model = firmwareModel(source);
    host.compatible = deviceTreeTexts(source, "compatible");
    host.serialNumber = deviceTreeText(source, "serial-number");
    host.osName = osName(source);
    host.architecture = architecture(source);
    host.commandLine = source.text("/proc/cmdline", {}, LONGEST_LINE);
    readKernel(source, &host);
    readLoad(source, &host);
    return reading;
}

} // namespace Kivo::Inventory
