// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Abstract keyed archive.
#pragma once

#include "Foundation/J3Object.h"
#include "Foundation/J3ScalarTypes.h"
#include "Foundation/J3String.h"

#include <vector>

namespace Kivo {

/// A store of single values, each under a small field number (1, 2, 3, ... in a record's order) and a key, which is
/// empty where the number says enough.
///
/// A read that finds nothing under its number and key, a value of another type or one out of the type's range throws a
/// J3RangeException and leaves its output as it was.
/// *Threads*: one at a time.
class J3_API J3Archive : public J3Object {
public:
    /// writeBool(number, bool, key), writeInt8(number, int8, key) ... writeUint64, writeFloat32, writeFloat64.
    /// @{
#define J3_ARCHIVE_WRITE(Name, Type) virtual void write##Name(uint8 number, Type value, const J3String& key) = 0;
    J3_SCALAR_TYPES(J3_ARCHIVE_WRITE)
#undef J3_ARCHIVE_WRITE
    /// @}

    /// Write a text, an object's own archive form, an array of bytes.
    /// @{
    virtual void writeString(uint8 number, const J3String& value, const J3String& key) = 0;
    virtual void writeObject(uint8 number, const J3Object& object, const J3String& key) = 0;
    virtual void writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key) = 0;
    /// @}

    /// readBool(number, bool*, key), readInt8(number, int8*, key) ... readUint64, readFloat32, readFloat64.
    /// @{
#define J3_ARCHIVE_READ(Name, Type) virtual void read##Name(uint8 number, Type* value, const J3String& key) = 0;
    J3_SCALAR_TYPES(J3_ARCHIVE_READ)
#undef J3_ARCHIVE_READ
    /// @}

    /// Read what the operation of the same type wrote.
    /// @{
    virtual void readString(uint8 number, J3String* value, const J3String& key) = 0;
    virtual void readObject(uint8 number, J3Object* object, const J3String& key) = 0;
    virtual void readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key) = 0;
    /// @}

protected:
    J3Archive() = default;
    J3Archive(const J3Archive&) = default;
    J3Archive& operator=(const J3Archive&) = default;
};

/// Read an array of exactly @p count bytes into @p out; one of another length is a J3RangeException.
J3_API void readUint8Array(J3Archive* archive, uint8 number, uint8* out, std::size_t count, const J3String& key);

/// The same into an array whose length the compiler knows, so that what was stored can never overrun it.
template <std::size_t Count>
inline void readUint8Array(J3Archive* archive, uint8 number, uint8 (&out)[Count], const J3String& key)
{
    readUint8Array(archive, number, out, Count, key);
}

} // namespace Kivo
