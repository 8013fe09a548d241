// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library sees of a machine, as JSON.
#include "Facts.h"

#include "NetFacts.h"
#include "Reading.h"

#include "Core/K7Version.h"
#include "OS/System/K7SystemUtil.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace K7Tool {

using namespace Kivo;

namespace {

constexpr std::size_t BUSIEST_INTERRUPTS = 5;
constexpr uint64 SECTOR_SIZE = 512;

/// Take a fact from an operation that may throw; a failure becomes null and a problem.
template <class Read>
Json fact(Facts& facts, const std::string& what, Read&& read)
{
    errno = 0;
    std::string thrown;
    try {
        return read();
    } catch (const J3String& message) {
        thrown = message.to_string();
    } catch (int code) {
        thrown = "unexpected contents (" + std::to_string(code) + ")";
    } catch (const std::exception& exception) {
        thrown = exception.what();
    }
    const K7SystemUtil::Failure failure = K7SystemUtil::lastFailure();
    facts.problems.push_back({what, thrown, failure.reason == J3String(thrown.c_str()) ? failure.errorCode : 0});
    return nullptr;
}

Json hostFacts(Facts& facts)
{
    Json host;
    host["name"] = attribute("/proc/sys/kernel/hostname");
    host["kernel_version"] = fact(facts, "kernel version", [] {
        K7Version version;
        K7SystemUtil::OS::getKernelVersion(&version);
        return version.toString().to_string();
    });
    host["kernel_text"] = attribute("/proc/version");
    host["uptime_seconds"] = fact(facts, "uptime", [] { return K7SystemUtil::OS::systemUptime(); });
    return host;
}

Json memoryFacts(Facts& facts)
{
    using Memory = K7SystemUtil::Memory;
    const Json total = Memory::getMemTotal();
    const K7SystemUtil::Failure failure = K7SystemUtil::lastFailure();
    if (total == 0)
        facts.problems.push_back({"memory", failure.reason.to_string(), failure.errorCode});
    return {
        {"mem_total_kib", total},
        {"mem_free_kib", Memory::getMemFree()},
        {"buffers_kib", Memory::getBuffers()},
        {"cached_kib", Memory::getCached()},
        {"swap_cached_kib", Memory::getSwapCached()},
        {"vmalloc_used_kib", Memory::getVmallocUsed()},
    };
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

Json interruptFacts(uint32 coreCount)
{
    J3String text;
    if (!K7SystemUtil::readFile(L"/proc/interrupts", &text))
        return nullptr;
    std::string bytes = text.to_string();
    const std::unique_ptr<std::FILE, FileCloser> file(
        ::fmemopen(bytes.data(), std::max<std::size_t>(bytes.size(), 1), "r"));
    struct Row {
        std::string name;
        uint64 count;
        std::string description;
    };
    std::vector<Row> rows;
    std::vector<J3String> tokens;
    if (file)
        K7SystemUtil::CPU::readLineFromProcInterrupts(&tokens, file.get()); // the names of the processors
    // A single core's own count may be unknown (0); the heading tells how many columns there are.
    const std::size_t columns = std::max<std::size_t>(coreCount, tokens.size());
    while (file && K7SystemUtil::CPU::readLineFromProcInterrupts(&tokens, file.get())) {
        if (tokens.empty())
            continue;
        Row row{tokens[0].to_string(), 0, ""};
        for (std::size_t i = 1; i < tokens.size(); ++i) {
            if (i <= columns)
                row.count += tokens[i].toUint64();
            else
                row.description += (row.description.empty() ? "" : " ") + tokens[i].to_string();
        }
        rows.push_back(std::move(row));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& left, const Row& right) { return left.count > right.count; });
    rows.resize(std::min(rows.size(), BUSIEST_INTERRUPTS));
    Json result = Json::array();
    for (const Row& row : rows)
        result.push_back({{"name", row.name}, {"count", row.count}, {"description", row.description}});
    return result;
}

Json cpuFacts(Facts& facts)
{
    const Json count = fact(facts, "processor cores", [] { return K7SystemUtil::CPU::coreCount(); });
    const auto cores = count.is_null() ? 0U : count.get<uint32>();
    Json cpu;
    cpu["core_count"] = cores == 0 ? Json(nullptr) : Json(cores); // 0 means unknown
    cpu["busiest_interrupts"] = interruptFacts(cores);
    return cpu;
}

/// What the upper byte of a PCI class code, or its upper two, say.
std::string pciClassName(uint32 code)
{
    static const struct {
        uint32 value;
        uint32 mask;
        const char* name;
    } CLASSES[] = {
        {0x000000, 0xFF0000, "Unclassified device"},
        {0x010100, 0xFFFF00, "IDE controller"},
        {0x010600, 0xFFFF00, "SATA controller"},
        {0x010700, 0xFFFF00, "SAS controller"},
        {0x010800, 0xFFFF00, "NVMe controller"},
        {0x010000, 0xFF0000, "Storage controller"},
        {0x020000, 0xFFFF00, "Ethernet controller"},
        {0x028000, 0xFFFF00, "Network controller"},
        {0x020000, 0xFF0000, "Network controller"},
        {0x030000, 0xFF0000, "Display controller"},
        {0x040000, 0xFF0000, "Multimedia device"},
        {0x050000, 0xFF0000, "Memory controller"},
        {0x060000, 0xFFFF00, "Host bridge"},
        {0x060100, 0xFFFF00, "ISA bridge"},
        {0x060400, 0xFFFF00, "PCI bridge"},
        {0x060000, 0xFF0000, "Bridge"},
        {0x070000, 0xFF0000, "Communication controller"},
        {0x080000, 0xFF0000, "System peripheral"},
        {0x0C0300, 0xFFFF00, "USB controller"},
        {0x0C0500, 0xFFFF00, "SMBus"},
        {0x0C0000, 0xFF0000, "Serial bus controller"},
        {0x120000, 0xFF0000, "Accelerator"},
        {0xFF0000, 0xFF0000, "Unassigned class"},
    };
    for (const auto& entry : CLASSES)
        if ((code & entry.mask) == entry.value)
            return entry.name;
    return "Class " + std::to_string(code >> 16U);
}

std::string hexText(int32 value)
{
    J3String text;
    return text.format(L"%04x", value).to_string();
}

Json pciFacts()
{
    using PCI = K7SystemUtil::PCI;
    Json result = Json::array();
    PCI::updatePciDeviceInfo();
    for (int32 index = 0;; ++index) {
        const PCI::DeviceInfo info = PCI::getDeviceInfo(index);
        if (!info.isValid())
            return result;
        const std::string address = info._addr.toString().to_string();
        const std::string directory = std::string(PCI::PCI_DEVICE_INFO_PATH) + "/" + address;
        Json function = {{"address", address},
                         {"vendor_id", hexText(info._vendorId)},
                         {"device_id", hexText(info._deviceId)},
                         {"class_code", attribute(directory + "/class")},
                         {"class_name", nullptr},
                         {"driver", linkName(directory + "/driver")}};
        if (function["class_code"].is_string()) {
            const auto code = std::strtoul(function["class_code"].get<std::string>().c_str(), nullptr, 16);
            function["class_name"] = pciClassName(static_cast<uint32>(code));
        }
        result.push_back(std::move(function));
    }
}

Json blockFacts()
{
    Json result = Json::array();
    for (const std::string& name : namesIn("/sys/block")) {
        const std::string directory = "/sys/block/" + name;
        const Json sectors = number(directory + "/size");
        if (sectors.is_null() || sectors.get<int64>() <= 0)
            continue; // an unused loop or RAM device
        const Json removable = number(directory + "/removable");
        const Json readOnly = number(directory + "/ro");
        result.push_back({{"name", name},
                          {"size_bytes", sectors.get<uint64>() * SECTOR_SIZE},
                          {"model", attribute(directory + "/device/model")},
                          {"removable", removable.is_null() ? removable : Json(removable != 0)},
                          {"read_only", readOnly.is_null() ? readOnly : Json(readOnly != 0)}});
    }
    return result;
}

} // namespace

Facts collectFacts()
{
    Facts facts;
    facts.document["host"] = hostFacts(facts);
    facts.document["memory"] = memoryFacts(facts);
    facts.document["cpu"] = cpuFacts(facts);
    facts.document["pci_functions"] = pciFacts();
    facts.document["block_devices"] = blockFacts();
    facts.document["network_interfaces"] = networkFacts();
    facts.document["dns"] = dnsFacts();
    return facts;
}

} // namespace K7Tool
