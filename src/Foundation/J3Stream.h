// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Abstract stream of bytes with typed access in either byte order.
#pragma once

#include "Foundation/J3Object.h"

#include <bit>

namespace Kivo {

enum J3ByteOrder : uint8 { J3_BIG_ENDIAN = 0, J3_LITTLE_ENDIAN = 1 };

/// The byte order of this machine.
inline constexpr J3ByteOrder J3_NATIVE_ENDIAN =
    std::endian::native == std::endian::big ? J3_BIG_ENDIAN : J3_LITTLE_ENDIAN;

/// A stream of bytes with one position for reading and writing. Values are converted to and from the stream's byte
/// order, which is big endian until it is set.
///
/// A typed read or write that cannot be done whole throws a J3RangeException, leaves its output as it was and, where it
/// is a single value, goes back to where it began.
/// *Threads*: one at a time.
class J3_API J3Stream : public J3Object {
public:
    [[nodiscard]] virtual bool isValid() const = 0;

    /// Bytes between the position and the end.
    [[nodiscard]] virtual uint32 remains() const = 0;
    [[nodiscard]] virtual uint32 size() const = 0;
    [[nodiscard]] virtual uint32 position() const = 0;

    /// @return false, with the position unchanged, when @p position lies beyond the end
    virtual bool moveTo(uint32 position) = 0;

    /// @return the number of bytes read, less than @p count only at the end
    virtual uint32 read(void* out, uint32 count) = 0;

    /// Overwrite from the position on and grow past the end. @return the number of bytes written
    virtual uint32 write(const void* bytes, uint32 count) = 0;

    /// Write @p count times @p value. @return the number of bytes written
    virtual uint32 fill(uint8 value, uint32 count) = 0;

    /// Drop everything.
    virtual void clear() = 0;

    [[nodiscard]] J3ByteOrder byteOrder() const { return _byteOrder; }

    void setByteOrder(J3ByteOrder order);

    /// Remember the position, and go back to it.
    void mark() { _mark = position(); }

    bool reset() { return moveTo(_mark); }

    void readBool(bool* value); ///< a byte other than 0 and 1 is a J3RangeException
    void readInt8(int8* value);
    void readInt16(int16* value);
    void readInt32(int32* value);
    void readInt64(int64* value);
    void readUint8(uint8* value);
    void readUint16(uint16* value);
    void readUint32(uint32* value);
    void readUint64(uint64* value);
    void readFloat32(float32* value);
    void readFloat64(float64* value);
    void readString(J3String* value);
    void readUint8Array(uint8* out, uint32 count);
    void readObject(J3Object* object);

    void writeBool(bool value); ///< one byte, 0 or 1
    void writeInt8(int8 value);
    void writeInt16(int16 value);
    void writeInt32(int32 value);
    void writeInt64(int64 value);
    void writeUint8(uint8 value);
    void writeUint16(uint16 value);
    void writeUint32(uint32 value);
    void writeUint64(uint64 value);
    void writeFloat32(float32 value);
    void writeFloat64(float64 value);
    void writeString(const J3String& value);
    void writeUint8Array(const uint8* bytes, uint32 count);
    void writeObject(const J3Object& object);

protected:
    J3Stream() = default;
    J3Stream(const J3Stream&) = default;
    J3Stream& operator=(const J3Stream&) = default;

private:
    template <class T>
    void readNumber(T* value);
    template <class T>
    void writeNumber(T value);

    J3ByteOrder _byteOrder = J3_BIG_ENDIAN;
    bool _swapsBytes = J3_NATIVE_ENDIAN != J3_BIG_ENDIAN;
    uint32 _mark = 0;
};

} // namespace Kivo
