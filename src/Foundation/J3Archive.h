// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Abstract keyed archive.
#pragma once

#include "Foundation/J3Object.h"
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
    virtual void writeBool(uint8 number, bool value, const J3String& key) = 0;
    virtual void writeInt8(uint8 number, int8 value, const J3String& key) = 0;
    virtual void writeInt16(uint8 number, int16 value, const J3String& key) = 0;
    virtual void writeInt32(uint8 number, int32 value, const J3String& key) = 0;
    virtual void writeInt64(uint8 number, int64 value, const J3String& key) = 0;
    virtual void writeUint8(uint8 number, uint8 value, const J3String& key) = 0;
    virtual void writeUint16(uint8 number, uint16 value, const J3String& key) = 0;
    virtual void writeUint32(uint8 number, uint32 value, const J3String& key) = 0;
    virtual void writeUint64(uint8 number, uint64 value, const J3String& key) = 0;
    virtual void writeFloat32(uint8 number, float32 value, const J3String& key) = 0;
    virtual void writeFloat64(uint8 number, float64 value, const J3String& key) = 0;
    virtual void writeString(uint8 number, const J3String& value, const J3String& key) = 0;
    virtual void writeObject(uint8 number, const J3Object& object, const J3String& key) = 0;
    virtual void writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key) = 0;

    virtual void readBool(uint8 number, bool* value, const J3String& key) = 0;
    virtual void readInt8(uint8 number, int8* value, const J3String& key) = 0;
    virtual void readInt16(uint8 number, int16* value, const J3String& key) = 0;
    virtual void readInt32(uint8 number, int32* value, const J3String& key) = 0;
    virtual void readInt64(uint8 number, int64* value, const J3String& key) = 0;
    virtual void readUint8(uint8 number, uint8* value, const J3String& key) = 0;
    virtual void readUint16(uint8 number, uint16* value, const J3String& key) = 0;
    virtual void readUint32(uint8 number, uint32* value, const J3String& key) = 0;
    virtual void readUint64(uint8 number, uint64* value, const J3String& key) = 0;
    virtual void readFloat32(uint8 number, float32* value, const J3String& key) = 0;
    virtual void readFloat64(uint8 number, float64* value, const J3String& key) = 0;
    virtual void readString(uint8 number, J3String* value, const J3String& key) = 0;
    virtual void readObject(uint8 number, J3Object* object, const J3String& key) = 0;
    virtual void readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key) = 0;

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
