// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Byte arrays of a known length in an archive.
#include "Foundation/J3Archive.h"

#include "Foundation/J3Exception.h"

#include <algorithm>

namespace Kivo {

void readUint8Array(J3Archive* archive, uint8 number, uint8* out, std::size_t count, const J3String& key)
{
    std::vector<uint8> bytes;
    archive->readUint8Array(number, &bytes, key);
    if (bytes.size() != count)
        throw J3RangeException(L"byte array of another length", 0, static_cast<int64>(count),
                               static_cast<int64>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), out);
}

} // namespace Kivo
