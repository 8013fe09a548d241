// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Abstract stream of bytes with typed access in either byte order.
#pragma once

#include "Foundation/J3Object.h"
#include "Foundation/J3ScalarTypes.h"

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

    /// Bytes in all.
    [[nodiscard]] virtual uint32 size() const = 0;

    /// Where the next read or write begins, in bytes from the start.
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

    /// Remember the position.
    void mark() { _mark = position(); }

    /// Go back to the position that was remembered last, 0 at first. @return false when it lies beyond the end
    bool reset() { return moveTo(_mark); }

    /// readBool(bool*), readInt8(int8*) ... readUint64(uint64*), readFloat32(float32*), readFloat64(float64*). A bool
    /// that is a byte other than 0 and 1 is a J3RangeException.
    /// @{
#define J3_STREAM_READ(Name, Type) void read##Name(Type* value);
    J3_SCALAR_TYPES(J3_STREAM_READ)
#undef J3_STREAM_READ
    /// @}

    /// Read what the operation of the same type wrote.
    /// @{
    void readString(J3String* value);
    void readUint8Array(uint8* out, uint32 count);
    void readObject(J3Object* object);
    /// @}

    /// writeBool(bool), writeInt8(int8) ... writeUint64(uint64), writeFloat32(float32), writeFloat64(float64). A bool
    /// is one byte, 0 or 1.
    /// @{
#define J3_STREAM_WRITE(Name, Type) void write##Name(Type value);
    J3_SCALAR_TYPES(J3_STREAM_WRITE)
#undef J3_STREAM_WRITE
    /// @}

    /// Write a text (its length in UTF-8 bytes as a uint32, then the bytes), bare bytes, an object's own stream form.
    /// @{
    void writeString(const J3String& value);
    void writeUint8Array(const uint8* bytes, uint32 count);
    void writeObject(const J3Object& object);
    /// @}

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
