// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// USB storage: found behind a port, described, mounted; hubs reset.
#include "OS/System/USB.h"

#include "support/MountCalls.h"
#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Core/K7SystemError.h"
#include "OS/System/FS.h"
#include "OS/System/Platform/Linux/detail/KernelMessageParser_p.h"
#include "OS/System/SCSI.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <sys/mount.h>

using namespace Kivo;
using namespace K7Test;
using FS = K7SystemUtil::FS;
using USB = K7SystemUtil::USB;
using Calls = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

const std::string HOST = "/sys/bus/usb/drivers/usb-storage/1-1:1.0/host7/target7:0:0/7:0:0:0/";

std::string described(int index)
{
    J3String text;
    USB::getStorageDesc(index, &text);
    return text.to_string();
}

std::string failedHub(const std::string& log)
{
    const auto hub = parseEnumerationFailure(log);
    return hub ? std::to_string(hub->bus) + ":" + hub->name : "none";
}

/// A file system in memory over a directory of the sandbox.
class Cover {
public:
    explicit Cover(const char* directory) : _directory(directory)
    {
        EXPECT_EQ(::mount("none", directory, "tmpfs", 0, nullptr), 0) << directory << ": " << std::strerror(errno);
    }
    ~Cover() { EXPECT_EQ(::umount2(_directory, MNT_DETACH), 0); }
    Cover(const Cover&) = delete;
    Cover& operator=(const Cover&) = delete;

    void file(const std::string& name, const std::string& contents) const
    {
        const fs::path path = _directory + ("/" + name);
        fs::create_directories(path.parent_path());
        std::ofstream(path) << contents;
    }

private:
    const char* _directory;
};

/// Notes what is traced, "USB::start(2) 16".
class Traces {
public:
    Traces()
    {
        K7SystemError::setHandler(
            [](void* calls, const J3String& tag, int error) {
                static_cast<Calls*>(calls)->push_back(tag.to_string() + " " + std::to_string(error));
            },
            &noted);
    }
    ~Traces() { K7SystemError::setHandler(nullptr); }
    Traces(const Traces&) = delete;
    Traces& operator=(const Traces&) = delete;

    Calls noted;
};

/// A machine with a disk of that partition table behind USB index 0; /dev is the test's own.
class USBLive : public testing::Test {
protected:
    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        _dev.emplace("/dev");
        tree.directory("/sys/bus/usb/devices/1-1:1.0").directory(HOST + "block/sdk");
    }

    void plug(int firstType, int secondType)
    {
        std::string record(512, '\0');
        record[446 + 4] = static_cast<char>(firstType);
        record[446 + 16 + 4] = static_cast<char>(secondType);
        _dev->file("sdk", record.replace(510, 2, "\x55\xAA"));
    }

    TemporaryTree tree;

private:
    std::optional<Cover> _dev;
};

} // namespace

TEST(USB, FindsTheHubOfAPortThatFailed)
{
    const std::string tail = ": unable to enumerate USB device";
    EXPECT_EQ(failedHub("[   12.345678] hub 1-0:1.0" + tail + " on port 2\n"), "1:");
    EXPECT_EQ(failedHub("hub 2-1.4:1.0" + tail + " on port 3"), "2:2-1.4");
    EXPECT_EQ(failedHub("[ 1.2] usb usb3-port2" + tail), "3:");
    EXPECT_EQ(failedHub("usb 1-1.4-port3" + tail), "1:1-1.4");
    EXPECT_EQ(failedHub("usb usb3-port2" + tail + "\nusb 1-2-port1" + tail + "\nusb 1-5: new device\n"), "1:1-2");
    for (const char* subject : {"", "hub", "hub 1:1.0", "usb usb-port2", "usb x-1-port2", "usb 1-0.1-port1", "usb 1-1",
                                "usb 1-2.2.2.2.2.2.2-port1", "hub 99999999999-0:1.0", "card 1-0:1.0"})
        EXPECT_EQ(failedHub(subject + tail), "none") << subject;
    EXPECT_EQ(failedHub("hub 1-0:1.0: config failed"), "none");
}

TEST(USBCaptured, DescribesADeviceInPrintableCharacters)
{
    TemporaryTree tree;
    tree.directory("/sys/bus/usb/devices/1-1:1.0").directory(HOST);
    ASSERT_TRUE(K7SystemUtil::SCSI::updateUsbDeviceInfo());
    EXPECT_EQ(described(0), "N/A");
    tree.file(HOST + "model", "Data\x01Traveler 3.0  \n");
    EXPECT_EQ(described(0), "DataTraveler 3.0");
    tree.file(HOST + "vendor", " \xC3\xA9Kingston\n");
    EXPECT_EQ(described(0), "Kingston DataTraveler 3.0");
    EXPECT_EQ(described(8), "N/A");
    EXPECT_FALSE(USB::getStorageDesc(0, nullptr));
    EXPECT_EQ(USB::indexToBus(0), 1);
    EXPECT_EQ(USB::indexToSubPort(8), -1);
}

TEST_F(USBLive, MountsThePartitionOrTheWholeDisk)
{
    MountCalls calls;
    plug(0x0C, 0x83);
    EXPECT_TRUE(USB::start());
    EXPECT_TRUE(USB::start(0, 2, true));
    EXPECT_TRUE(USB::start(0, FS::MAX_PARTITION_COUNT, false));
    USB::finish();
    plug(0x83, 0x0C);
    EXPECT_TRUE(USB::start());
    plug(0x0C, 0);
    EXPECT_TRUE(USB::checkExistence("/dev/sdk"));
    EXPECT_FALSE(USB::checkExistence("/dev/none"));
    EXPECT_EQ(calls.noted(),
              (Calls{"mount /dev/sdk1 /usbdisk vfat c0ed0000 -", "mount /dev/sdk3 /usbdisk vfat c0ed0000 -",
                     "mount /dev/sdk /usbdisk vfat c0ed0001 -", "umount /usbdisk",
                     "mount /dev/sdk /usbdisk vfat c0ed0000 -", "mount /dev/sdk1 /usbdisk vfat c0ed0000 -",
                     "umount /usbdisk", "mount /dev/sdk1 /usbdisk vfat c0ed0000 -", "umount /usbdisk"}));
    const RecordingRunner runner;
    plug(0x07, 0);
    EXPECT_TRUE(USB::start());
    EXPECT_EQ(runner.commands(), (Calls{"ntfs-3g /dev/sdk1 /usbdisk"}));
}

TEST_F(USBLive, TellsWhatItCannotMount)
{
    const Traces traces;
    MountCalls calls;
    J3String disk(L"before");
    bool usable[FS::MAX_PARTITION_COUNT] = {true};
    uint64 sizes[FS::MAX_PARTITION_COUNT] = {1};
    EXPECT_FALSE(USB::getStorageInfo(0, &disk, usable, sizes)); // sysfs knows it, but there is no such node
    EXPECT_EQ(disk, L"");
    EXPECT_FALSE(usable[0]);
    EXPECT_EQ(sizes[0], 0U);
    EXPECT_FALSE(USB::start());
    EXPECT_EQ(traces.noted, Calls{});
    EXPECT_FALSE(USB::start(0, 0, true));
    plug(0x0C, 0);
    calls.results = {EBUSY};
    EXPECT_FALSE(USB::start());
    EXPECT_EQ(calls.noted().size(), 5U);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"USB::start");
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/dev/sdk1");
    ASSERT_EQ(traces.noted.size(), 2U);
    EXPECT_TRUE(traces.noted[0].starts_with("USB::start(2) "));
    EXPECT_EQ(traces.noted[1], "USB::start(1) " + std::to_string(EBUSY));
}

TEST_F(USBLive, ReloadsTheDriverOfAHostController)
{
    const RecordingRunner runner;
    for (const int type : {0, 1, 2, 3})
        USB::reloadDriver(type);
    EXPECT_EQ(runner.commands(),
              (Calls{"modprobe -r xhci_hcd", "modprobe xhci_hcd", "modprobe -r ohci_hcd", "modprobe ohci_hcd",
                     "modprobe -r ehci_hcd", "modprobe ehci_hcd", "modprobe -r xhci_hcd", "modprobe xhci_hcd"}));
}

TEST(USBHubLive, ResetsTheHubThatTheKernelNamedLast)
{
    K7_REQUIRE_SANDBOX();
    const Cover dev("/dev");
    const Cover bus("/sys/bus");
    dev.file("bus/usb/001/001", "");
    dev.file("bus/usb/002/017", "");
    bus.file("usb/devices/2-1.4/devnum", "17\n");
    const Traces traces;
    std::string line;
    RecordingRunner runner;
    runner.behaviour = [&line](const std::string&, K7SystemUtil::Shell::CoutListener* listener) {
        if (!line.empty())
            listener->resultChanged(("  " + line + ": unable to enumerate USB device\n").c_str(), 0);
        return line.empty() ? 256 : 0;
    };
    EXPECT_FALSE(USB::resetLastErroredDevice());
    line = "usb usb1-port2";
    EXPECT_TRUE(USB::resetLastErroredDevice());
    line = "usb 2-1.4-port1";
    EXPECT_TRUE(USB::resetLastErroredDevice());
    EXPECT_EQ(traces.noted, Calls{});
    line = "usb usb3-port1";
    EXPECT_FALSE(USB::resetLastErroredDevice());
    EXPECT_EQ(traces.noted, (Calls{"USB::resetDevice(2) " + std::to_string(ENOENT)}));
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/dev/bus/usb/003/001");
    EXPECT_EQ(runner.commands().front(), "dmesg | tail -n 10 | grep \"unable to enumerate USB device\"");
    const TemporaryTree captured;
    EXPECT_FALSE(USB::resetLastErroredDevice());
    EXPECT_EQ(runner.commands().size(), 4U);
}
