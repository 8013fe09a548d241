// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What an ATA disk says of itself.
#include "OS/System/ATA.h"

#include "Base/UniqueFd_p.h"
#include "OS/System/Platform/Linux/detail/AtaIdentifyParser_p.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

#include <cstring>

#include <fcntl.h>
#include <linux/hdreg.h>
#include <sys/ioctl.h>

namespace Kivo {

namespace {

/// The block that HDIO_DRIVE_CMD takes its four arguments from, and answers behind.
struct DriveCommand {
    unsigned char command = 0xEC; // ATA IDENTIFY DEVICE
    unsigned char sectorNumber = 0;
    unsigned char feature = 0;
    unsigned char sectorCount = 1;
    char data[1020] = {0x4F, static_cast<char>(0xC2)};
};
static_assert(sizeof(DriveCommand) == 1024);

} // namespace

bool K7SystemUtil::ATA::identifyAtaHdd(char* model, char* serial, const char* devPath)
{
    return attempt("ATA::identifyAtaHdd", [&] {
        require(model && serial && hasText(devPath), "invalid input parameters");
        const UniqueFd disk(retried([&] { return ::open(devPath, O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
        requireCall(static_cast<bool>(disk), "open() failed", devPath);
        DriveCommand block;
        requireCall(retried([&] { return ::ioctl(disk.get(), HDIO_DRIVE_CMD, &block); }) >= 0,
                    "ioctl(HDIO_DRIVE_CMD) failed", devPath);
        const AtaIdentity identity = parseAtaIdentify(std::span(block.data).first<ATA_IDENTIFY_SIZE>());
        std::memcpy(model, identity.model, MODEL_SIZE);
        std::memcpy(serial, identity.serial, SERIAL_SIZE);
    });
}

} // namespace Kivo
