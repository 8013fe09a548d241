// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a record does with a wrong item.
#include "support/SampleRecord.h"

#include "Foundation/J3JsonArchive.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(J3Record, OneWrongItemAnywhereLeavesTheRecordUnchanged)
{
    for (uint8 number = 1; number <= 13; ++number) {
        J3JsonArchive archive;
        ASSERT_TRUE(archive.fromJson(SampleRecord::JSON));
        if (number == 12)
            archive.writeUint32(12, 3, L""); // a count that does not agree with the bytes
        else
            archive.writeObject(number, J3JsonArchive(), L""); // an empty object, which no field takes
        SampleRecord record = otherRecord();
        EXPECT_THROW(record.unarchiveFrom(&archive), J3RangeException) << int{number};
        EXPECT_EQ(record, otherRecord()) << int{number};
    }
}
