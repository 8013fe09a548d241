// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Names and addresses of a device.
#include "Core/K7EthDevInfo.h"

#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(K7EthDevInfo, GivesNarrowNamesOfWhatWasSetOrRead)
{
    K7EthDevInfo info;
    info.setDevName(L"eth0");
    EXPECT_FALSE(info.isValid());
    info.setIfceName(L"br\u00FC");
    J3MemoryStream stream;
    info.serializeTo(&stream);
    stream.moveTo(0);
    K7EthDevInfo read;
    read.deserializeFrom(&stream);
    EXPECT_EQ(read, info);
    EXPECT_TRUE(read.isValid());
    EXPECT_STREQ(read.ifceNameCStr(), "br\xC3\xBC");
}
