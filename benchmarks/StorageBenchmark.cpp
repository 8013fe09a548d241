// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A disk's whole set of probes beside bare reading of what they read, and a search among many names beside bare
// listing.
#include "OS/System/SCSI.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

using namespace Kivo;
using SCSI = K7SystemUtil::SCSI;
namespace fs = std::filesystem;

namespace {

constexpr int NAMES = 10000;

/// What every probe of a disk reads, once each.
void bareReads(benchmark::State& state)
{
    const std::string top = K7_FIXTURES "/virt-board/sys/";
    for ([[maybe_unused]] auto turn : state) {
        char buffer[512];
        benchmark::DoNotOptimize(::readlink((top + "block/sdc").c_str(), buffer, sizeof buffer));
        benchmark::DoNotOptimize(::readlink((top + "class/scsi_disk/6:0:0:0").c_str(), buffer, sizeof buffer));
        for (const char* name :
             {"block/sdc/device/rev", "block/sdc/device/model", "block/sdc/size", "block/sdc/sdc1/size",
              "class/scsi_host/host6/unique_id", "class/ata_link/link1/sata_spd", "bus/usb/devices/2-1/version"}) {
            const int fd = ::open((top + name).c_str(), O_RDONLY | O_CLOEXEC);
            benchmark::DoNotOptimize(::read(fd, buffer, sizeof buffer));
            ::close(fd);
        }
    }
}
BENCHMARK(bareReads);

void probe(const char* name, int32 bus, int32 port)
{
    char text[SCSI::MAX_LINE_SIZE];
    char path[SCSI::MAX_PATH_SIZE];
    int32 number = 0;
    bool present = false;
    benchmark::DoNotOptimize(SCSI::isSataHddStorage(name));
    benchmark::DoNotOptimize(SCSI::isESataHddStorage(name));
    benchmark::DoNotOptimize(SCSI::isUsbStorage(name));
    benchmark::DoNotOptimize(SCSI::getDiskNumber(name, &number));
    benchmark::DoNotOptimize(SCSI::getPortNumber(name, &number));
    benchmark::DoNotOptimize(SCSI::getPortStatus(0, &present));
    benchmark::DoNotOptimize(SCSI::sataLinkType(0));
    benchmark::DoNotOptimize(SCSI::getSataModel(name, text));
    benchmark::DoNotOptimize(SCSI::getSataDiskNumber(SCSI::getSataHost(name)));
    benchmark::DoNotOptimize(SCSI::isIdeHddPartitioned(name));
    benchmark::DoNotOptimize(SCSI::getSataHostBus(name));
    benchmark::DoNotOptimize(SCSI::getUsbVersion(name, text, sizeof text));
    benchmark::DoNotOptimize(SCSI::getUsbStoragePath(bus, port, 1, path));
    benchmark::DoNotOptimize(SCSI::getUsbStorageVendor(bus, port, 1, text));
    benchmark::DoNotOptimize(SCSI::getUsbStorageModel(bus, port, 1, text));
    benchmark::DoNotOptimize(SCSI::getUsbStorageSize(name, 0));
    benchmark::DoNotOptimize(SCSI::getUsbStorageSize(name, 1));
}

/// Every probe, of a USB disk of the captured board, which has the most to read.
void allProbesCaptured(benchmark::State& state)
{
    K7SystemUtil::setSystemRoot(K7_FIXTURES "/virt-board");
    for ([[maybe_unused]] auto turn : state)
        probe("sdc", 2, 1);
    K7SystemUtil::setSystemRoot(L"");
}
BENCHMARK(allProbesCaptured);

/// Every probe, of the machine's first block device; most end early when it is not a SCSI disk.
void allProbesLive(benchmark::State& state)
{
    std::string name = "sda";
    for (const auto& entry : fs::directory_iterator(SCSI::BLOCK_DEVICE_PATH))
        if (fs::exists(entry.path() / "device"))
            name = entry.path().filename();
    state.SetLabel(name);
    for ([[maybe_unused]] auto turn : state)
        probe(name.c_str(), 1, 1);
}
BENCHMARK(allProbesLive);

/// A directory of many names, there until the program ends.
const std::string& manyNames()
{
    static const struct Directory {
        Directory()
        {
            path = fs::temp_directory_path() / "k7-names-XXXXXX";
            if (!::mkdtemp(path.data()))
                return;
            for (int i = 0; i < NAMES; ++i)
                std::ofstream(path + "/dm-" + std::to_string(i));
            std::ofstream(path + "/sda");
        }
        ~Directory() { fs::remove_all(path); }

        std::string path;
    } directory;
    return directory.path;
}

void bareReaddir(benchmark::State& state)
{
    const char* const path = manyNames().c_str();
    for ([[maybe_unused]] auto turn : state) {
        DIR* const directory = ::opendir(path);
        while (const dirent* entry = ::readdir(directory))
            benchmark::DoNotOptimize(entry);
        ::closedir(directory);
    }
}
BENCHMARK(bareReaddir);

void findSubDirAmongMany(benchmark::State& state)
{
    const char* const path = manyNames().c_str();
    for ([[maybe_unused]] auto turn : state) {
        char found[SCSI::MAX_NAME_SIZE];
        benchmark::DoNotOptimize(SCSI::findSubDir(path, "sd", 2, found));
    }
}
BENCHMARK(findSubDirAmongMany);

} // namespace
