// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a disk's identify data says, and nodes that are no disk.
#include "OS/System/ATA.h"

#include "support/SystemTree.h"

#include "OS/System/Platform/Linux/detail/AtaIdentifyParser_p.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Kivo;
using namespace K7Test;
using ATA = K7SystemUtil::ATA;

namespace {

/// Identify data with texts as a disk stores them, the bytes of every word exchanged.
struct IdentifyData {
    IdentifyData& put(std::size_t word, std::string text)
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            bytes[(2 * word + i) ^ 1U] = text[i];
        return *this;
    }

    char bytes[ATA_IDENTIFY_SIZE] = {};
};

std::string padded(std::string text, std::size_t size)
{
    text.resize(size, ' ');
    return text;
}

} // namespace

TEST(ATA, TextsAreTakenFromTheirWords)
{
    struct Case {
        std::string words10To19; ///< the serial number
        std::string words20To24; ///< what follows it
        std::string words27To46; ///< the model
        std::string serial;
        std::string model;
    };
    const Case cases[] = {
        {padded("SATA-A-0001", 20), "", padded("BENCH HD 256", 40), "SATA-A-0001", "BENCH HD 256"},
        {"            WD-12345", "0123456789", padded("x", 40), "WD-123450123456789", "x"},
        {"01234567890123456789", "abcdefghij", std::string(40, 'M'), "01234567890123456789abcdefghij",
         std::string(40, 'M')},
        {padded("", 20), "", "", "", ""},
    };
    for (const Case& disk : cases) {
        IdentifyData data;
        data.put(10, disk.words10To19).put(20, disk.words20To24).put(26, "F1").put(27, disk.words27To46).put(47, "NO");
        const AtaIdentity identity = parseAtaIdentify(data.bytes);
        EXPECT_EQ(std::string(identity.serial), disk.serial);
        EXPECT_EQ(std::string(identity.model), disk.model);
    }
}

TEST(ATALive, WhatIsNoDiskLeavesTheTextsAlone)
{
    const std::size_t descriptors = openDescriptors();
    const std::tuple<const char*, const char*, int> cases[] = {
        {"/dev/k7-gone", "open() failed", ENOENT},
        {"/dev/null", "ioctl(HDIO_DRIVE_CMD) failed", ENOTTY},
        {"", "invalid input parameters", 0},
    };
    for (const auto& [path, reason, error] : cases) {
        char model[ATA::MODEL_SIZE] = "before";
        char serial[ATA::SERIAL_SIZE] = "before";
        EXPECT_FALSE(ATA::identifyAtaHdd(model, serial, path));
        EXPECT_STREQ(model, "before");
        EXPECT_STREQ(serial, "before");
        EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"ATA::identifyAtaHdd");
        EXPECT_EQ(K7SystemUtil::lastFailure().reason, J3String(reason));
        EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, error);
        EXPECT_EQ(K7SystemUtil::lastFailure().subject, J3String(path));
    }
    EXPECT_FALSE(ATA::identifyAtaHdd(nullptr, nullptr, "/dev/null"));
    EXPECT_EQ(openDescriptors(), descriptors);
}
