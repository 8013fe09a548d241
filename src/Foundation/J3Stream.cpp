// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Typed access to a stream in its byte order.
#include "Foundation/J3Stream.h"

#include "Foundation/J3Exception.h"
#include "Foundation/J3String.h"

#include <algorithm>
#include <array>

namespace Kivo {

void J3Stream::setByteOrder(J3ByteOrder order)
{
    _byteOrder = order;
    _swapsBytes = order != J3_NATIVE_ENDIAN;
}

void J3Stream::readUint8Array(uint8* out, uint32 count)
{
    const uint32 start = position();
    if (count <= remains() && read(out, count) == count)
        return;
    moveTo(start);
    throw J3RangeException(L"stream read beyond the end", 0, size(), int64{start} + count);
}

void J3Stream::writeUint8Array(const uint8* bytes, uint32 count)
{
    const uint32 start = position();
    if (write(bytes, count) == count)
        return;
    moveTo(start);
    throw J3RangeException(L"stream write beyond the limit", 0, size(), int64{start} + count);
}

template <class T>
void J3Stream::readNumber(T* value)
{
    std::array<uint8, sizeof(T)> bytes;
    readUint8Array(bytes.data(), sizeof(T));
    if (_swapsBytes)
        std::reverse(bytes.begin(), bytes.end());
    *value = std::bit_cast<T>(bytes);
}

template <class T>
void J3Stream::writeNumber(T value)
{
    auto bytes = std::bit_cast<std::array<uint8, sizeof(T)>>(value);
    if (_swapsBytes)
        std::reverse(bytes.begin(), bytes.end());
    writeUint8Array(bytes.data(), sizeof(T));
}

void J3Stream::readBool(bool* value)
{
    const uint32 start = position();
    uint8 byte = 0;
    readNumber(&byte);
    if (byte > 1) {
        moveTo(start);
        throw J3RangeException(L"stream byte is not a bool", 0, 1, byte);
    }
    *value = byte == 1;
}

void J3Stream::writeBool(bool value) { writeNumber(static_cast<uint8>(value)); }

#define J3_STREAM_NUMBER(Name, Type)                                                                                   \
    void J3Stream::read##Name(Type* value) { readNumber(value); }                                                      \
    void J3Stream::write##Name(Type value) { writeNumber(value); }
J3_INTEGER_TYPES(J3_STREAM_NUMBER)
J3_FLOAT_TYPES(J3_STREAM_NUMBER)
#undef J3_STREAM_NUMBER

void J3Stream::readString(J3String* value) { value->deserializeFrom(this); }

void J3Stream::readObject(J3Object* object) { object->deserializeFrom(this); }

void J3Stream::writeString(const J3String& value) { value.serializeTo(this); }

void J3Stream::writeObject(const J3Object& object) { object.serializeTo(this); }

} // namespace Kivo
