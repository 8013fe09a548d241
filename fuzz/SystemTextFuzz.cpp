// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every parser of what the kernel and disks say, over the same bytes.
#include "OS/System/Platform/Linux/detail/AtaIdentifyParser_p.h"
#include "OS/System/Platform/Linux/detail/KernelParser_p.h"
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"
#include "OS/System/Platform/Linux/detail/PciParser_p.h"
#include "OS/System/Platform/Linux/detail/ProcessorParser_p.h"
#include "OS/System/Platform/Linux/detail/ScsiLinkParser_p.h"
#include "OS/System/Platform/Linux/detail/ShellParser_p.h"

using namespace Kivo;

extern "C" int LLVMFuzzerTestOneInput(const uint8* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    MeminfoParser rows(text);
    for (MeminfoRow row{}; rows.next(&row);) {
    }
    InterruptsParser interrupts(text);
    for (InterruptRow row; interrupts.next(&row);) {
        sumOfInterrupts(row.counts, interrupts.columns());
        takeInterrupts(&row.counts, interrupts.columns());
    }
    K7Version version;
    parseKernelVersion(text, &version);
    parseUptime(text);
    parseCoreCount(text);
    parsePciAddress(text);
    parsePciIdentifier(text);
    parsePidLine(text);
    parseProgramName(text);
    parseScsiAddress(text);
    parseUsbDevice(text);
    isUsbName(text);
    K7SystemUtil::SCSI::UsbIndexToDev dev;
    UsbPortNames().take(text, &dev);
    if (text.size() >= ATA_IDENTIFY_SIZE)
        parseAtaIdentify(std::span(text).first<ATA_IDENTIFY_SIZE>());
    return 0;
}
