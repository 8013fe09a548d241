// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is known of one block device.
#include "OS/Kernel/K7BlockDevice.h"

namespace Kivo {

K7BlockDevice* K7BlockDevice::clone() const { return new K7BlockDevice(*this); }

J3String K7BlockDevice::toString() const
{
    J3String text(L"{");
    text.appendf(L"%@,%@,%@,%@,", &_devUUID, &_devName, &_parentName, &_devNode);
    text.appendf(L"%d,%d,", _type, _transport);
    text.appendf(L"%S,", _readOnly ? L"read-only" : L"read-writable");
    text.appendf(L"%S,", _removable ? L"removable" : L"fixed");
    text.appendf(L"%@,%@,%@,%@,", &_vendor, &_model, &_revision, &_serial);
    text.appendf(L"%llu", static_cast<unsigned long long>(_capacity));
    return text.appendf(L"%u%u}", _physicalSectorSize, _logicalSectorSize);
}

bool K7BlockDevice::isValid() const
{
    return !_devUUID.isEmpty() && !_devName.isEmpty() && _type != K7_BLKDEV_TYPE_UNKNOWN;
}

} // namespace Kivo
