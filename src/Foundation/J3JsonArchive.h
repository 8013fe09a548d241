// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archive kept as a JSON document.
#pragma once

#include "Foundation/J3Archive.h"

#include <memory>

namespace Kivo {

/// An archive that is read from and written as JSON or CBOR (RFC 8949): one object whose items are named by their key,
/// or by their field number in decimal when the key is empty. A nested object is a nested JSON object, bytes are an
/// array of numbers, and a float that JSON has no number for is the text "NaN", "Infinity" or "-Infinity".
class J3_API J3JsonArchive : public J3Archive {
public:
    J3JsonArchive();
    J3JsonArchive(const J3JsonArchive& other);
    J3JsonArchive& operator=(const J3JsonArchive& other);
    ~J3JsonArchive() override;

    [[nodiscard]] J3JsonArchive* clone() const override;
    [[nodiscard]] J3String toString() const override; ///< the document as toJson() gives it

    [[nodiscard]] std::string toJson() const;
    [[nodiscard]] std::vector<uint8> toCbor() const;

    /// Take the whole document from a text or from bytes.
    /// @return false, with the archive unchanged, when it is ill-formed, is nested more than 64 deep, or is no object
    bool fromJson(const std::string& text);
    bool fromCbor(const std::vector<uint8>& bytes);

    void writeBool(uint8 number, bool value, const J3String& key) override;
    void writeInt8(uint8 number, int8 value, const J3String& key) override;
    void writeInt16(uint8 number, int16 value, const J3String& key) override;
    void writeInt32(uint8 number, int32 value, const J3String& key) override;
    void writeInt64(uint8 number, int64 value, const J3String& key) override;
    void writeUint8(uint8 number, uint8 value, const J3String& key) override;
    void writeUint16(uint8 number, uint16 value, const J3String& key) override;
    void writeUint32(uint8 number, uint32 value, const J3String& key) override;
    void writeUint64(uint8 number, uint64 value, const J3String& key) override;
    void writeFloat32(uint8 number, float32 value, const J3String& key) override;
    void writeFloat64(uint8 number, float64 value, const J3String& key) override;
    void writeString(uint8 number, const J3String& value, const J3String& key) override;
    void writeObject(uint8 number, const J3Object& object, const J3String& key) override;
    void writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key) override;

    void readBool(uint8 number, bool* value, const J3String& key) override;
    void readInt8(uint8 number, int8* value, const J3String& key) override;
    void readInt16(uint8 number, int16* value, const J3String& key) override;
    void readInt32(uint8 number, int32* value, const J3String& key) override;
    void readInt64(uint8 number, int64* value, const J3String& key) override;
    void readUint8(uint8 number, uint8* value, const J3String& key) override;
    void readUint16(uint8 number, uint16* value, const J3String& key) override;
    void readUint32(uint8 number, uint32* value, const J3String& key) override;
    void readUint64(uint8 number, uint64* value, const J3String& key) override;
    void readFloat32(uint8 number, float32* value, const J3String& key) override;
    void readFloat64(uint8 number, float64* value, const J3String& key) override;
    void readString(uint8 number, J3String* value, const J3String& key) override;
    void readObject(uint8 number, J3Object* object, const J3String& key) override;
    void readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key) override;

private:
    struct Document;

    std::unique_ptr<Document> _document;
};

} // namespace Kivo
