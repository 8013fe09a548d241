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
    /// @return false, with the archive unchanged, when it is ill-formed, is not an object, is larger than 16 MiB, is
    ///         nested more than 64 deep or has, in CBOR, a negative integer that is too small for an int64
    /// *Cost*: linear in the size but for the logarithm of an object's number of items; at most some 30 bytes of memory
    /// for each byte read, and none for what is refused by its size or depth.
    /// @{
    bool fromJson(const std::string& text);
    bool fromCbor(const std::vector<uint8>& bytes);
    /// @}

#define J3_ARCHIVE_SCALAR(Name, Type)                                                                                  \
    void write##Name(uint8 number, Type value, const J3String& key) override;                                          \
    void read##Name(uint8 number, Type* value, const J3String& key) override;
    J3_SCALAR_TYPES(J3_ARCHIVE_SCALAR)
#undef J3_ARCHIVE_SCALAR
    void writeString(uint8 number, const J3String& value, const J3String& key) override;
    void writeObject(uint8 number, const J3Object& object, const J3String& key) override;
    void writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key) override;
    void readString(uint8 number, J3String* value, const J3String& key) override;
    void readObject(uint8 number, J3Object* object, const J3String& key) override;
    void readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key) override;

private:
    struct Document;

    explicit J3JsonArchive(std::unique_ptr<Document> document);

    std::unique_ptr<Document> _document;
};

} // namespace Kivo
