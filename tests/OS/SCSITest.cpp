// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Addresses, their ranges and numbers, and every probe of a disk over trees with the kernel's link shapes.
#include "OS/System/SCSI.h"

#include "support/AssertReports.h"
#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include "OS/System/Platform/Linux/detail/ScsiLinkParser_p.h"

#include <climits>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <sstream>

#include <sys/resource.h>

using namespace Kivo;
using namespace K7Test;
using SCSI = K7SystemUtil::SCSI;
using Address = SCSI::Address;
using UsbIndexToDev = SCSI::UsbIndexToDev;

namespace {

const std::string ASSERTED = "OS/System/Platform/Linux/SCSI, ";
const std::string PCI = "/devices/platform/4010000000.pcie/pci0000:00/";

/// Brings the tables that a test changes back to what they were.
template <class Table>
class Restored {
public:
    explicit Restored(Table& table) : _table(table) { std::memcpy(&_saved, &table, sizeof _saved); }
    ~Restored() { std::memcpy(&_table, &_saved, sizeof _saved); }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

private:
    Table& _table;
    Table _saved;
};

/// Add a disk as the kernel shows it. @param host the path below /sys of what its SCSI host belongs to
void addDisk(TemporaryTree* tree, const std::string& host, const std::string& address, const std::string& name,
             const std::string& revision = "1.07")
{
    const std::string number = address.substr(0, address.find(':'));
    const std::string device =
        host + "/host" + number + "/target" + address.substr(0, address.rfind(':')) + '/' + address;
    tree->file("/sys" + device + "/rev", revision + '\n')
        .file("/sys" + device + "/vendor", "ACME    \n")
        .file("/sys" + device + "/model", name + " MODEL      \n")
        .file("/sys" + device + "/block/" + name + "/size", "2048\n")
        .link("/sys" + device + "/block/" + name + "/device", "../../../" + address)
        .link("/sys/block/" + name, ".." + device + "/block/" + name);
}

/// Add a USB storage device with a disk. @param device the path below its host controller, "usb1/1-5/1-5.3"
void addUsbDisk(TemporaryTree* tree, const std::string& device, const std::string& address, const std::string& name)
{
    const std::string top = PCI + "0000:00:02.0/" + device;
    const std::string usbName = device.substr(device.rfind('/') + 1);
    const std::string interface = usbName + ":1.0";
    addDisk(tree, top + '/' + interface, address, name);
    tree->file("/sys" + top + "/version", " 2.00\n")
        .link("/sys/bus/usb/devices/" + usbName, "../../.." + top)
        .link("/sys/bus/usb/devices/" + interface, "../../.." + top + '/' + interface)
        .link("/sys/bus/usb/drivers/usb-storage/" + interface, "../../../.." + top + '/' + interface);
}

std::string usbStoragePath(int32 bus, int32 port)
{
    char path[SCSI::MAX_PATH_SIZE] = "none";
    return SCSI::getUsbStoragePath(bus, port, 1, path) ? path : "none";
}

/// What the probes say of a disk, leaving out what does not hold for it.
std::string descriptionOf(const std::string& disk)
{
    const char* const name = disk.c_str();
    char text[SCSI::MAX_LINE_SIZE] = "";
    int32 number = -1;
    std::ostringstream out;
    out << (SCSI::isSataHddStorage(name) ? "SATA" : "") << (SCSI::isESataHddStorage(name) ? "eSATA" : "")
        << (SCSI::isUsbStorage(name) ? "USB" : "") << (SCSI::getUsbVersion(name, text, sizeof text) ? text : "")
        << " host " << SCSI::getSataHost(name);
    if (SCSI::getDiskNumber(name, &number))
        out << " disk " << number;
    if (SCSI::getPortNumber(name, &number))
        out << " port " << number;
    out << " bus " << SCSI::getSataHostBus(name);
    if (SCSI::getSataModel(("/dev/" + disk).c_str(), text))
        out << " \"" << text << '"';
    out << ' ' << SCSI::getUsbStorageSize(name, 0) << (SCSI::isIdeHddPartitioned(name) ? " partitioned" : "")
        << " index " << SCSI::getSataDiskInfoIndex(SCSI::getSataHost(name));
    return out.str();
}

} // namespace

TEST(SCSI, AddressesAndWiringAreOrderedByAPackedKey)
{
    const auto less = std::weak_ordering::less;
    const auto same = std::weak_ordering::equivalent;
    const std::tuple<Address, Address, std::weak_ordering> cases[] = {
        {{0, 0, 0, 3}, {0, 0, 1, 0}, less},       {{0, 0, 1023, 3}, {0, 1, 0, 0}, less},
        {{0, 1023, 1023, 3}, {1, 0, 0, 0}, less}, {{0, 1024, 1024, 4}, {0, 0, 0, 0}, same},
        {{1024, 0, 0, 0}, {0, 0, 0, 0}, same},    {{1022, 9, 9, 0}, {-1, 0, 0, 0}, less},
    };
    for (const auto& [left, right, order] : cases) {
        EXPECT_EQ(left <=> right, order) << left._host << ':' << left._channel;
        EXPECT_NE(left, right);
    }
    EXPECT_LT(UsbIndexToDev(1, 1, 1023), UsbIndexToDev(1, 2, 0));
    EXPECT_EQ(UsbIndexToDev(1, 1, 1024) <=> UsbIndexToDev(1, 1, 0), same);
    UsbIndexToDev dev(3, 1, 1);
    dev.reset();
    EXPECT_EQ(dev, UsbIndexToDev(-1, -1, -1));
}

TEST(SCSI, RangesClassifyAddresses)
{
    const Restored ranges(SCSI::HOST_ADDRESS_RANGES);
    const std::pair<Address, int32> cases[] = {{{0, 0, 0, 0}, 0}, {{2, 1, 0, 0}, 0},   {{2, 1, 0, 1}, -1},
                                               {{3, 0, 0, 0}, 1}, {{6, 3, 0, 0}, 1},   {{6, 3, 0, 1}, -1},
                                               {{7, 0, 0, 0}, 2}, {{1000, 5, 5, 5}, 2}};
    for (const auto& [address, expected] : cases)
        for (int32 hostIf = 0; hostIf < SCSI::HOST_IF_TYPE_COUNT; ++hostIf)
            EXPECT_EQ(SCSI::isHostAddressRange(hostIf, address), hostIf == expected)
                << address._host << " as " << hostIf;

    SCSI::setHostAddressRange(SCSI::HOST_IF_SATA, {0, 0, 0, 0}, {5, 0, 0, 0});
    EXPECT_TRUE(SCSI::isHostAddressRange(SCSI::HOST_IF_SATA, {5, 0, 0, 0}));
    AssertReports reports;
    for (const int32 none : {3, -1}) {
        SCSI::setHostAddressRange(none, {}, {});
        EXPECT_FALSE(SCSI::isHostAddressRange(none, {}));
    }
    const std::string set = ASSERTED + "setHostAddressRange: NOT supported HOST interface!";
    const std::string ask = ASSERTED + "isHostAddressRange: NOT supported HOST_IFCE!";
    EXPECT_EQ(reports.texts, (std::vector{set, ask, set, ask}));
}

TEST(SCSI, TablesAnswerForAnyIndex)
{
    const Restored wiring(SCSI::USB_INDEX_TO_DEV);
    const int32 buses[] = {1, 1, 3, 4, -1, -1, -1, -1, -1};
    const int32 ports[] = {1, 2, 1, 1, -1, -1, -1, -1, -1};
    for (int32 i = 0; i < 9; ++i) {
        EXPECT_EQ(SCSI::getUsbIndexToBus(i), buses[i]) << i;
        EXPECT_EQ(SCSI::getUsbIndexToPort(i), ports[i]) << i;
        EXPECT_EQ(SCSI::getUsbIndexToSubPort(i), i < 4 ? 1 : -1) << i;
    }
    for (const uint32 index : {7U, 8U, UINT_MAX})
        SCSI::setUsbIndexToDev(index, {9, 8, 7});
    EXPECT_EQ(SCSI::getUsbIndexToSubPort(7), 7);
    for (const int32 none : {-1, 8, INT_MAX, INT_MIN})
        EXPECT_EQ(SCSI::getUsbIndexToBus(none), -1) << none;
    const std::pair<int32, int32> groups[] = {{3, 0},  {4, 1},  {24, 0},      {25, 1}, {27, 1},     {31, 0},
                                              {32, 0}, {33, 1}, {INT_MAX, 1}, {-1, 1}, {INT_MIN, 0}};
    for (const auto& [disk, group] : groups)
        EXPECT_EQ(SCSI::diskNumberToStorageGroupId(disk), group) << disk;
}

TEST(SCSI, LinksAreTakenApart)
{
    const std::tuple<const char*, std::optional<Address>, const char*> cases[] = {
        {"../devices/pci0000:00/0000:00:01.0/ata1/host0/target0:0:0/0:0:0:0/block/sda", Address(0, 0, 0, 0), ""},
        {"../devices/platform/soc/fd000000.usb/usb2/2-1/2-1:1.0/host12/target12:0:0/12:0:0:1/block/sdb",
         Address(12, 0, 0, 1), "2-1"},
        {"../devices/pci0000:00/0000:00:02.0/usb1/1-5/1-5.3/1-5.3.1/1-5.3.1:1.0/host1025/target1025:0:0/1025:0:0:0/"
         "block/sdd",
         Address(1025, 0, 0, 0), "1-5.3.1"},
        {"../devices/pci0000:00/0000:00:04.0/host2/port-2:0/expander-2:0/port-2:0:3/end_device-2:0:3/target2:0:1/"
         "2:0:1:0/block/sdf",
         Address(2, 0, 1, 0), ""},
        {"../devices/pci0000:00/0000:00:05.0/nvme/nvme0/nvme0n1", {}, ""},
        {"../devices/platform/soc/mmc_host/mmc0/mmc0:0001/block/mmcblk0", {}, ""},
        {"usb/usbx/1-1/usb1/1-0:1.0/-1/1-/1-1x/block/sda", {}, ""},
        {"99999999999999999999:-99999999999999999999:x:2x:5", Address(INT_MAX, INT_MIN, 0, 2), ""},
        {"1:2:3/::4::5:6:/7:8:9::10", Address(7, 8, 9, 10), ""},
        {"", {}, ""},
    };
    for (const auto& [target, address, usbDevice] : cases) {
        EXPECT_EQ(parseScsiAddress(target), address) << target;
        EXPECT_EQ(parseUsbDevice(target), usbDevice) << target;
    }
}

TEST(SCSICaptured, TheBoardsDisksAreFound)
{
    const Restored ranges(SCSI::HOST_ADDRESS_RANGES);
    const FixtureRoot root("virt-board");
    SCSI::setHostAddressRange(SCSI::HOST_IF_SATA, {0, 0, 0, 0}, {5, 0, 0, 0});
    SCSI::setHostAddressRange(SCSI::HOST_IF_ESATA, {1, 0, 0, 0}, {0, 0, 0, 0}); // the board has none
    SCSI::setHostAddressRange(SCSI::HOST_IF_USB, {6, 0, 0, 0}, {});
    const std::pair<std::string, std::string> cases[] = {
        {"sda", "SATA host 0 disk 0 port 0 bus 1 \"BENCH HD 256    \" 268435456 partitioned index 0"},
        {"sdb", "SATA host 2 disk 4 port 4 bus 3 \"QEMU HARDDISK   \" 134217728 index 1"},
        {"sdc", "USB 3.00 host 6 disk 6 bus 0 \"QEMU HARDDISK   \" 67108864 index 2"},
    };
    const std::size_t descriptors = openDescriptors();
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(descriptionOf(name), expected);
        EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    }
    EXPECT_EQ(SCSI::getUsbStorageSize("sda", 2), 133169152U);
    EXPECT_EQ(SCSI::getSataDiskNumber(1), 0xFFFFFFFF);
    EXPECT_EQ(SCSI::sataLinkType(0), 1);
    EXPECT_EQ(SCSI::sataLinkType(1), 0);
    for (const int32 port : {-1, 0, 1, 2, 32}) {
        bool present = false;
        EXPECT_EQ(SCSI::getPortStatus(port, &present), port >= 0 && port < 32) << port;
        EXPECT_EQ(present, port == 0 || port == 2) << port;
    }
    EXPECT_EQ(usbStoragePath(2, 1), "/dev/sdc");
    char text[SCSI::MAX_LINE_SIZE];
    EXPECT_TRUE(SCSI::getUsbStorageVendor(2, 1, 1, text));
    EXPECT_STREQ(text, "QEMU    ");
    EXPECT_TRUE(SCSI::getUsbStorageModel(2, 1, 1, text));
    EXPECT_STREQ(text, "QEMU HARDDISK   ");
    EXPECT_FALSE(SCSI::getUsbStorageModel(2, 1, 2, text));
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(SCSICaptured, DiskAndPortNumbersFollowTheBoard)
{
    TemporaryTree tree;
    struct Case {
        const char* address;
        const char* revision;
        int32 channel;
        int32 number;
        int32 port; ///< -1 for none
    };
    const Case cases[] = {
        {"1:1:0:0", "1.07", 1, 3, 3},  {"4:2:0:0", "1.07", 2, 6, 38},       {"3:1:0:0", "0961", 0, 0, 32},
        {"3:1:0:0", "0962", 1, 1, 33}, {"6:3:0:0", "0961", 2, 14, 46},      {"2:1:0:0", "0961", 1, 5, 5},
        {"7:1:0:0", "0961", 1, 7, -1}, {"1000:0:0:0", "1.07", 0, 1000, -1}, {"2:2:0:0", "1.07", 2, 2, -1},
    };
    std::string name = "sda";
    for (const Case& c : cases) {
        addDisk(&tree, PCI + "0000:00:01.0/ata9", c.address, name, c.revision);
        Address address;
        int32 number = -1;
        int32 port = -1;
        EXPECT_TRUE(SCSI::getAddress(name.c_str(), &address));
        EXPECT_EQ(address._channel, c.channel) << c.address << ' ' << c.revision;
        EXPECT_TRUE(SCSI::getDiskNumber(name.c_str(), &number));
        EXPECT_EQ(number, c.number) << c.address << ' ' << c.revision;
        EXPECT_EQ(SCSI::getPortNumber(name.c_str(), &port), c.port >= 0);
        EXPECT_EQ(port, c.port) << c.address << ' ' << c.revision;
        ++name.back();
    }
    EXPECT_FALSE(SCSI::isESataHddStorage("sdb"));
    SCSI::init(2, 4, 1, true);
    EXPECT_TRUE(SCSI::isESataHddStorage("sdb"));
    int32 number = -1;
    EXPECT_TRUE(SCSI::getDiskNumber("sda", &number) && number == 4) << number;
    EXPECT_TRUE(SCSI::getDiskNumber("sdb", &number) && number == 10) << number;
    SCSI::init(3, 2, 0, false);
}

TEST(SCSICaptured, UsbPortsLeadToTheirDisks)
{
    TemporaryTree tree;
    const Restored wiring(SCSI::USB_INDEX_TO_DEV);
    EXPECT_EQ(usbStoragePath(1, 1), "none");
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, J3String(SCSI::USB_STORAGE_PATH));
    addUsbDisk(&tree, "usb1/1-10", "8:0:0:0", "sdb");
    addUsbDisk(&tree, "usb1/1-1", "1030:0:0:0", "sda");
    addUsbDisk(&tree, "usb3/3-1/3-1.4/3-1.4.2", "10:0:0:0", "sdaa");
    tree.file("/sys/bus/usb/drivers/usb-storage/bind", "").directory("/sys/bus/usb/drivers/usb-storage/4-1:1.0/host9");

    EXPECT_EQ(usbStoragePath(1, 1), "/dev/sda");
    EXPECT_EQ(usbStoragePath(1, 10), "/dev/sdb");
    EXPECT_EQ(usbStoragePath(3, 1), "/dev/sdaa");
    EXPECT_EQ(usbStoragePath(2, 1), "none");
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    EXPECT_EQ(usbStoragePath(-1, 1), "none");
    char version[5] = "none";
    EXPECT_TRUE(SCSI::getUsbVersion("sdaa", version, sizeof version));
    EXPECT_STREQ(version, " 2.0");

    SCSI::setUsbIndexToDev(1, {});
    RecordingRunner runner;
    SCSI::rescanUsb();
    EXPECT_EQ(runner.commands(),
              (std::vector<std::string>{
                  "echo 1 > /sys/bus/usb/drivers/usb-storage/1-1:1.0/host1030/target1030:0:0/1030:0:0:0/rescan",
                  "echo 1 > /sys/bus/usb/drivers/usb-storage/3-1.4.2:1.0/host10/target10:0:0/10:0:0:0/rescan",
                  "echo 1 > /sys/bus/usb/drivers/usb-storage/4-1:1.0/host9/target9:0:0/9:0:0:0/rescan"}));
    tree.directory("/sys/bus/usb/drivers/usb-storage/1-1;reboot/host1");
    std::filesystem::remove(tree.real("/sys/bus/usb/drivers/usb-storage/1-1:1.0"));
    std::filesystem::remove(tree.real("/sys/bus/usb/drivers/usb-storage/1-10:1.0"));
    SCSI::rescanUsb();
    EXPECT_EQ(runner.commands().size(), 5U);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"1-1;reboot");
}

TEST(SCSICaptured, WiringComesFromTheNamesOfUsbDevices)
{
    const Restored wiring(SCSI::USB_INDEX_TO_DEV);
    TemporaryTree tree;
    EXPECT_FALSE(SCSI::updateUsbDeviceInfo());
    for (const char* name :
         {"usb1", "1-1", "1-1.2:1.0", "1-1:3.0", "1-2:x.0", "1-2:2.0", "2-1:7.0", "3-1.4.2", "3-2:7.0"})
        tree.directory(SCSI::USB_DEVICE_INFO_PATH + ('/' + std::string(name)));
    EXPECT_TRUE(SCSI::updateUsbDeviceInfo());
    EXPECT_EQ(SCSI::USB_INDEX_TO_DEV[0], UsbIndexToDev(1, 1, 3));
    EXPECT_EQ(SCSI::USB_INDEX_TO_DEV[1], UsbIndexToDev(3, 1, 4));
    EXPECT_EQ(SCSI::USB_INDEX_TO_DEV[2], UsbIndexToDev(3, 1, 1));

    UsbPortNames ports;
    UsbIndexToDev dev;
    EXPECT_TRUE(ports.take("1-1:1.0", &dev));
    EXPECT_TRUE(ports.take("1-2:1.0", &dev));
    EXPECT_FALSE(ports.take("1-2:1.0", &dev));
    EXPECT_FALSE(ports.take("1.01-2:", &dev)); // across two names
    for (int i = 0; i < 100; ++i)
        ports.take("9-9:" + std::to_string(100 + i), &dev);
    EXPECT_TRUE(ports.take("9-9:199", &dev)); // beyond what is noted
}

TEST(SCSICaptured, EntriesAreFoundByTheBeginOfTheirNames)
{
    TemporaryTree tree;
    const std::string longest(255, 'x');
    for (const std::string name : {"sdb", "sdaa", "sdc1", "sdc", longest.c_str()})
        tree.directory("/d/" + name);
    const std::tuple<const char*, int32, std::string> cases[] = {
        {"sd", 2, "sdb"}, {"sda", 3, "sdaa"}, {"sdc!", 3, "sdc"}, {"sdc", 99, "sdc"}, {"sd", 99, "none"},
        {"q", 1, "none"}, {"", 5, "none"},    {"x", 1, longest},  {"sd", -1, "none"},
    };
    for (const auto& [text, count, expected] : cases) {
        char found[SCSI::MAX_NAME_SIZE] = "none";
        EXPECT_EQ(SCSI::findSubDir("/d", text, count, found), expected != "none") << text << ' ' << count;
        EXPECT_EQ(found, expected);
    }
    AssertReports reports;
    char found[SCSI::MAX_NAME_SIZE] = "none";
    EXPECT_FALSE(SCSI::findSubDir(nullptr, "x", 1, found));
    EXPECT_FALSE(SCSI::findSubDir("/d", nullptr, 1, found));
    EXPECT_FALSE(SCSI::findSubDir("/d", "x", 0, found));
    EXPECT_EQ(reports.texts,
              (std::vector{ASSERTED + "findSubDir: path is Null!", ASSERTED + "findSubDir: subString is Null!",
                           ASSERTED + "findSubDir: count is Zero!"}));
}

TEST(SCSICaptured, TextsStayInsideTheirBuffers)
{
    TemporaryTree tree;
    tree.file("/sys/block/sda/device/model", std::string(1000, 'M')).file("/sys/block/sdb/device/model", "");
    char model[SCSI::MAX_LINE_SIZE + 1];
    model[SCSI::MAX_LINE_SIZE] = '#';
    EXPECT_TRUE(SCSI::getSataModel("sda", model));
    EXPECT_EQ(std::strlen(model), SCSI::MAX_LINE_SIZE - 1);
    EXPECT_EQ(model[SCSI::MAX_LINE_SIZE], '#');
    EXPECT_FALSE(SCSI::getSataModel("sdb", model));
    const std::pair<int32, std::string> paths[] = {{3, "03"}, {100, "100"}, {-1, "-1"}, {INT_MIN, "-2147483648"}};
    for (const auto& [bus, text] : paths) {
        char path[SCSI::MAX_PATH_SIZE];
        EXPECT_TRUE(SCSI::getPciPath(bus, path));
        EXPECT_EQ(path, "/sys/bus/pci/devices/0000:" + text + ":00.0");
    }
    const std::pair<const char*, uint64> sizes[] = {
        {"0\n", 0}, {"1\n", 512}, {"36028797018963967", ~uint64{511}}, {"36028797018963968", 0}, {"-1", 0}, {"x", 0}};
    for (const auto& [sectors, size] : sizes) {
        tree.file("/sys/block/sda/sda12/size", sectors);
        EXPECT_EQ(SCSI::getUsbStorageSize("sda", 12), size) << sectors;
    }
    const std::pair<const char*, int32> speeds[] = {{"3.0 Gbps\n", 2},  {"1.5 Gbps\n", 1}, {"6.0 Gbps\n", 0},
                                                    {"<unknown>\n", 0}, {"\n3.0", 0},      {"", 0}};
    for (const auto& [speed, type] : speeds) {
        tree.file("/sys/class/ata_link/link10/sata_spd", speed);
        EXPECT_EQ(SCSI::sataLinkType(9), type) << speed;
    }
    EXPECT_EQ(SCSI::sataLinkType(INT_MAX), 0);
}

TEST(SCSICaptured, ProbesTellWhatTheyCannotReadAndNeverLeaveTheDirectory)
{
    TemporaryTree tree;
    addDisk(&tree, PCI + "0000:00:01.0/ata9", "3:0:0:0", "sda");
    tree.link("/sys/block/vda", "../devices/pci0000:00/0000:00:06.0/virtio2/block/vda").file("/sys/secret", "1:2:3:4");
    tree.link("/sys/link", "1:2:3:4").file("/sys/device/model", "secret");
    SCSI::setESataSupport(true);
    char text[SCSI::MAX_LINE_SIZE] = "before";
    int32 number = -7;
    Address address(7, 7, 7, 7);
    const std::pair<const char*, std::function<bool(const char*)>> probes[] = {
        {"getAddress", [&](const char* dev) { return SCSI::getAddress(dev, &address); }},
        {"isSataHddStorage", SCSI::isSataHddStorage},
        {"isESataHddStorage", SCSI::isESataHddStorage},
        {"isUsbStorage", SCSI::isUsbStorage},
        {"getSataHost", [](const char* dev) { return SCSI::getSataHost(dev) != -1; }},
        {"getDiskNumber", [&](const char* dev) { return SCSI::getDiskNumber(dev, &number); }},
        {"getPortNumber", [&](const char* dev) { return SCSI::getPortNumber(dev, &number); }},
        {"getSataHostBus", [](const char* dev) { return SCSI::getSataHostBus(dev) != -1; }},
        {"isIdeHddPartitioned", SCSI::isIdeHddPartitioned},
        {"getUsbVersion", [&](const char* dev) { return SCSI::getUsbVersion(dev, text, sizeof text); }},
        {"getUsbStorageSize", [](const char* dev) { return SCSI::getUsbStorageSize(dev, 0) != 0; }},
        {"getSataModel", [&](const char* dev) { return SCSI::getSataModel(dev, text); }},
    };
    for (const auto& [name, probe] : probes) {
        const J3String operation = J3String("SCSI::") + J3String(name);
        for (const char* dev : {static_cast<const char*>(nullptr), "", ".", "..", "../link", "x/..", "/.."}) {
            EXPECT_FALSE(probe(dev)) << name << ' ' << (dev ? dev : "null");
            EXPECT_EQ(K7SystemUtil::lastFailure().operation, operation);
        }
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{0, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        EXPECT_FALSE(probe("sda")) << name;
        EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, EMFILE) << name;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    const std::string revision = "/sys" + PCI + "0000:00:01.0/ata9/host3/target3:0:0/3:0:0:0/rev";
    std::filesystem::remove(tree.real(revision));
    EXPECT_EQ(SCSI::getSataHost("sda"), 3); // no revision is not the bridge's
    tree.directory(revision);
    EXPECT_EQ(SCSI::getSataHost("sda"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/sys/block/sda/device/rev");
    EXPECT_FALSE(SCSI::getAddress("vda", &address));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L""); // has no address: an answer
    EXPECT_FALSE(SCSI::getAddress("sdz", &address));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    EXPECT_EQ(address, Address(7, 7, 7, 7));
    EXPECT_EQ(number, -7);
    EXPECT_STREQ(text, "before");
    SCSI::setESataSupport(false);
}
