// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stream over an owned buffer.
#include "Foundation/J3MemoryStream.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Kivo {

J3MemoryStream::J3MemoryStream(const void* bytes, uint32 size)
{
    const auto* const first = static_cast<const uint8*>(bytes);
    if (first)
        _buffer.assign(first, first + size);
}

J3MemoryStream* J3MemoryStream::clone() const { return new J3MemoryStream(*this); }

bool J3MemoryStream::moveTo(uint32 position)
{
    if (position > size())
        return false;
    _position = position;
    return true;
}

uint32 J3MemoryStream::read(void* out, uint32 count)
{
    count = std::min(count, remains());
    if (count != 0)
        std::memcpy(out, _buffer.data() + _position, count);
    _position += count;
    return count;
}

uint32 J3MemoryStream::write(const void* bytes, uint32 count)
{
    uint8* const room = makeRoom(&count);
    if (count != 0)
        std::memcpy(room, bytes, count);
    return count;
}

uint32 J3MemoryStream::fill(uint8 value, uint32 count)
{
    uint8* const room = makeRoom(&count);
    std::fill_n(room, count, value);
    return count;
}

void J3MemoryStream::clear()
{
    _buffer.clear();
    _position = 0;
}

/// Move the position over @p count bytes, which positions of 32 bits may cut short, and give where they begin.
uint8* J3MemoryStream::makeRoom(uint32* count)
{
    *count = std::min(*count, std::numeric_limits<uint32>::max() - _position);
    const uint32 start = _position;
    if (*count > remains())
        _buffer.resize(std::size_t{start} + *count);
    _position += *count;
    return _buffer.data() + start;
}

} // namespace Kivo
