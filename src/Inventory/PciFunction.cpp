// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The functions of the machine's PCI devices.
#include "Inventory/PciFunction.h"

#include "Inventory/detail/PciParser_p.h"
#include "Inventory/detail/Source_p.h"
#include "OS/System/PCI.h"

#include <array>
#include <cerrno>
#include <charconv>

namespace Kivo::Inventory {

namespace {

constexpr const char* WHAT = "PCI functions";

std::string hexText(uint32 value, std::size_t digits)
{
    std::array<char, 2 * sizeof value> buffer{};
    const auto [end, error] = std::to_chars(buffer.begin(), buffer.end(), value, 16);
    std::string text(buffer.begin(), end);
    return text.insert(0, digits - std::min(digits, text.size()), '0');
}

Value speedValue(const std::optional<float64>& speed) { return speed ? Value(Real{*speed, 1}) : Value(); }

constexpr ColumnInfo identifier(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits};
}

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::RIGHT, traits};
}

constexpr Column<PciFunction> COLUMNS[] = {
    column<&PciFunction::address>(
        identifier("address", "address", "Domain, bus, device and function, hexadecimal", IDENTITY)),
    column<&PciFunction::vendorId>(identifier("vendor_id", "vendor", "Who made the device, hexadecimal")),
    column<&PciFunction::deviceId>(identifier("device_id", "device", "Which of the vendor's it is, hexadecimal")),
    column<&PciFunction::subsystemVendorId>(
        identifier("subsystem_vendor_id", "subsystem vendor", "Who made the board, hexadecimal", DETAIL)),
    column<&PciFunction::subsystemDeviceId>(identifier("subsystem_device_id", "subsystem device",
                                                       "Which of the board vendor's it is, hexadecimal", DETAIL)),
    {identifier("class_code", "class code", "Class, subclass and programming interface, hexadecimal", DETAIL),
     [](const PciFunction& f) { return f.classCode ? Value("0x" + hexText(*f.classCode, 6)) : Value(); }},
    {identifier("class_name", "class", "What the function does"),
     [](const PciFunction& f) { return Value(f.className()); }},
    column<&PciFunction::driver>(identifier("driver", "driver", "The driver that is bound to the function")),
    {number("link_width", "lanes", "Lanes of the PCI Express link in use", VOLATILE),
     [](const PciFunction& f) { return Value(f.link.width); }},
    {number("link_width_max", "lanes max", "Lanes that the device has"),
     [](const PciFunction& f) { return Value(f.linkLimit.width); }},
    {number("link_speed_gt_per_s", "GT/s", "Transfers of the PCI Express link per second now, in billions", VOLATILE),
     [](const PciFunction& f) { return speedValue(f.link.speed); }},
    {number("link_speed_max_gt_per_s", "GT/s max", "Transfers that the device is capable of per second, in billions"),
     [](const PciFunction& f) { return speedValue(f.linkLimit.speed); }},
    column<&PciFunction::interrupt>(number("interrupt", "interrupt", "Number of the interrupt line", DETAIL)),
};

/// Reads the attributes of one function.
class FunctionReader {
public:
    FunctionReader(Source& source, const std::string& address)
        : _source(source), _directory(std::string(K7SystemUtil::PCI::PCI_DEVICE_INFO_PATH) + "/" + address + "/")
    {}

    [[nodiscard]] std::optional<std::string> identifier(const char* name) const
    {
        constexpr std::size_t DIGITS = 4;
        const auto value = number(name, 16);
        return value ? std::optional(hexText(*value, DIGITS)) : std::nullopt;
    }

    [[nodiscard]] std::optional<uint32> number(const char* name, int base = 10) const
    {
        const auto value = _source.number(_directory + name, base);
        return value ? std::optional(static_cast<uint32>(*value)) : std::nullopt;
    }

    [[nodiscard]] PciLink link(const std::string& prefix) const
    {
        // EINVAL: the function has no PCI Express capability
        const auto width = _source.text(_directory + prefix + "_link_width", {EINVAL});
        const auto speed = _source.text(_directory + prefix + "_link_speed", {EINVAL});
        return {width ? parsePciLinkWidth(*width) : std::nullopt, speed ? parsePciLinkSpeed(*speed) : std::nullopt};
    }

    [[nodiscard]] std::optional<std::string> driver() const { return _source.linkName(_directory + "driver"); }

private:
    Source& _source;
    std::string _directory;
};

} // namespace

std::optional<std::string> PciFunction::className() const
{
    return classCode ? std::optional(pciClassName(*classCode)) : std::nullopt;
}

template <>
std::span<const Column<PciFunction>> columns<PciFunction>()
{
    return COLUMNS;
}

Listing<PciFunction> listPciFunctions()
{
    Listing<PciFunction> listing;
    Source source(WHAT, &listing.problems);
    const auto addresses = source.names(K7SystemUtil::PCI::PCI_DEVICE_INFO_PATH);
    listing.known = addresses.has_value();
    for (const std::string& address : addresses.value_or(std::vector<std::string>())) {
        const FunctionReader read(source, address);
        PciFunction function;
        function.address = address;
        function.vendorId = read.identifier("vendor");
        function.deviceId = read.identifier("device");
        function.subsystemVendorId = read.identifier("subsystem_vendor");
        function.subsystemDeviceId = read.identifier("subsystem_device");
        function.classCode = read.number("class", 16);
        function.driver = read.driver();
        function.link = read.link("current");
        function.linkLimit = read.link("max");
        function.interrupt = read.number("irq");
        if (function.interrupt == 0U)
            function.interrupt.reset();
        listing.records.push_back(std::move(function));
    }
    return listing;
}

} // namespace Kivo::Inventory
