// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The block device record: validity, text and stored forms.
#include "OS/Kernel/K7BlockDevice.h"

#include "support/RecordForms.h"

using namespace Kivo;

namespace {

K7BlockDevice sampleDisk()
{
    K7BlockDevice disk;
    disk.setDevUUID(L"u");
    disk.setDevName(L"sda1");
    disk.setParentName(L"sda");
    disk.setDevNode(K7KDevNode(8, 1));
    disk.setType(K7BlockDevice::K7_BLKDEV_TYPE_PART);
    disk.setTransport(K7BlockDevice::K7_BLKDEV_TRANSPORT_SATA);
    disk.setReadOnly(true);
    disk.setRemoval(true);
    disk.setVendor(L"V");
    disk.setModel(L"M");
    disk.setRevision(L"R");
    disk.setSerial(L"S");
    disk.setCapacity(1000);
    disk.setPhysicalSectorSize(4096);
    disk.setLogicalSectorSize(512);
    return disk;
}

} // namespace

TEST(K7BlockDevice, IsValidWithUuidNameAndType)
{
    K7BlockDevice disk = sampleDisk();
    EXPECT_TRUE(disk.isValid());
    disk.setType(0);
    EXPECT_FALSE(disk.isValid());
    disk = sampleDisk();
    disk.setDevUUID(L"");
    EXPECT_FALSE(disk.isValid());
    disk = sampleDisk();
    disk.setDevName(L"");
    EXPECT_FALSE(disk.isValid());
}

TEST(K7BlockDevice, PrintsItsNumbersWithoutSeparators)
{
    EXPECT_EQ(K7BlockDevice().toString(), L"{,,,0.0,0,0,read-writable,fixed,,,,,000}");
    EXPECT_EQ(sampleDisk().toString(), L"{u,sda1,sda,8.1,2,1,read-only,removable,V,M,R,S,10004096512}");
}

TEST(K7BlockDevice, ComparesEveryField)
{
    K7BlockDevice other = sampleDisk();
    EXPECT_EQ(other, sampleDisk());
    other.setRemoval(false);
    EXPECT_NE(other, sampleDisk());
    other.makeInvalid();
    EXPECT_EQ(other, K7BlockDevice());
}

TEST(K7BlockDevice, StoresItsFieldsInOrder)
{
    K7Test::expectForms(
        sampleDisk(),
        {0,   0, 0, 1, 'u', 0,   0, 0, 4, 's', 'd', 'a', '1', 0,    0,   0, 3,    's', 'd', 'a', 0, 0x80, 0, 1,
         0,   0, 0, 2, 0,   0,   0, 1, 1, 1,   0,   0,   0,   1,    'V', 0, 0,    0,   1,   'M', 0, 0,    0, 1,
         'R', 0, 0, 0, 1,   'S', 0, 0, 0, 0,   0,   0,   3,   0xE8, 0,   0, 0x10, 0,   0,   0,   2, 0},
        R"({"1":"u","2":"sda1","3":"sda","4":{"1":8388609},"5":2,"6":1,"7":true,"8":true,"9":"V","10":"M","11":"R",)"
        R"("12":"S","13":1000,"14":4096,"15":512})");
}
