// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archive kept as a JSON document.
#include "Foundation/J3JsonArchive.h"

#include "Foundation/J3Exception.h"
#include "Foundation/J3JsonValue_p.h"

#include <cmath>
#include <limits>
#include <utility>

namespace Kivo {

using namespace J3Json;

namespace {

std::string itemName(uint8 number, const J3String& key)
{
    return key.isEmpty() ? std::to_string(number) : key.to_string();
}

template <class T>
Value itemOf(T value)
{
    if constexpr (std::is_same_v<T, bool> || std::is_floating_point_v<T>)
        return std::conditional_t<std::is_same_v<T, bool>, bool, float64>{value};
    else if (std::in_range<uint64>(value))
        return static_cast<uint64>(value);
    else
        return static_cast<int64>(value);
}

bool read(const Value& item, bool* value)
{
    const bool* const found = item.get<bool>();
    if (found)
        *value = *found;
    return found != nullptr;
}

template <class T>
bool readInteger(const Value& item, T* value)
{
    const auto take = [value](const auto* number) {
        if (!number || !std::in_range<T>(*number))
            return false;
        *value = static_cast<T>(*number);
        return true;
    };
    return take(item.get<uint64>()) || take(item.get<int64>());
}

template <class T>
bool readFloat(const Value& item, T* value)
{
    float64 number = 0;
    if (const auto* const real = item.get<float64>())
        number = *real;
    else if (const auto* const large = item.get<uint64>())
        number = static_cast<float64>(*large);
    else if (const auto* const negative = item.get<int64>())
        number = static_cast<float64>(*negative);
    else if (const auto* const text = item.getBoxed<std::string>(); text && *text == "NaN")
        number = std::numeric_limits<float64>::quiet_NaN();
    else if (text && (*text == "Infinity" || *text == "-Infinity"))
        number =
            text->front() == '-' ? -std::numeric_limits<float64>::infinity() : std::numeric_limits<float64>::infinity();
    else
        return false;
    if (std::isfinite(number) && std::abs(number) > std::numeric_limits<T>::max())
        return false;
    *value = static_cast<T>(number);
    return true;
}

#define J3_READ_NUMBER(Name, Type)                                                                                     \
    [[maybe_unused]] bool read(const Value& item, Type* value) { return readInteger(item, value); }
J3_INTEGER_TYPES(J3_READ_NUMBER)
#undef J3_READ_NUMBER

bool read(const Value& item, float32* value) { return readFloat(item, value); }

bool read(const Value& item, float64* value) { return readFloat(item, value); }

} // namespace

/// The items: the archive's own, or those of the object that a reading archive looks at until it changes them.
struct J3JsonArchive::Document {
    Document() = default;
    explicit Document(const Object* looksAt) : lookedAt(looksAt) {}
    Document(const Document& other) : own(other.items()) {}
    Document& operator=(const Document&) = delete;
    ~Document() = default;

    [[nodiscard]] const Object& items() const { return lookedAt ? *lookedAt : own; }

    Object& writable()
    {
        if (lookedAt)
            own = Object(*std::exchange(lookedAt, nullptr));
        return own;
    }

    void put(uint8 number, const J3String& key, Value item) { writable()[itemName(number, key)] = std::move(item); }

    [[nodiscard]] const Value& get(uint8 number, const J3String& key) const
    {
        const Value* const item = items().find(itemName(number, key));
        if (!item)
            refuse(number, key, L"is missing");
        return *item;
    }

    [[noreturn]] void refuse(uint8 number, const J3String& key, const wchar_t* why) const
    {
        throw J3RangeException(L"archive item " + J3String::from_string(itemName(number, key)) + L" " + why, 1,
                               static_cast<int64>(items().size()), number);
    }

    Object own;
    const Object* lookedAt = nullptr;
};

J3JsonArchive::J3JsonArchive() : J3JsonArchive(std::make_unique<Document>()) {}

J3JsonArchive::J3JsonArchive(std::unique_ptr<Document> document) : _document(std::move(document)) {}

J3JsonArchive::J3JsonArchive(const J3JsonArchive& other)
    : J3Archive(other), _document(std::make_unique<Document>(*other._document))
{}

J3JsonArchive& J3JsonArchive::operator=(const J3JsonArchive& other)
{
    _document = std::make_unique<Document>(*other._document);
    return *this;
}

J3JsonArchive::~J3JsonArchive() = default;

J3JsonArchive* J3JsonArchive::clone() const { return new J3JsonArchive(*this); }

J3String J3JsonArchive::toString() const { return J3String::from_string(toJson()); }

std::string J3JsonArchive::toJson() const { return J3Json::toJson(_document->items()); }

std::vector<uint8> J3JsonArchive::toCbor() const { return J3Json::toCbor(_document->items()); }

bool J3JsonArchive::fromJson(const std::string& text)
{
    Object read;
    if (!J3Json::fromJson(text, &read))
        return false;
    _document->writable() = std::move(read);
    return true;
}

bool J3JsonArchive::fromCbor(const std::vector<uint8>& bytes)
{
    Object read;
    if (!J3Json::fromCbor(bytes, &read))
        return false;
    _document->writable() = std::move(read);
    return true;
}

#define J3_ARCHIVE_SCALAR(Name, Type)                                                                                  \
    void J3JsonArchive::write##Name(uint8 number, Type value, const J3String& key)                                     \
    {                                                                                                                  \
        _document->put(number, key, itemOf(value));                                                                    \
    }                                                                                                                  \
    void J3JsonArchive::read##Name(uint8 number, Type* value, const J3String& key)                                     \
    {                                                                                                                  \
        if (!read(_document->get(number, key), value))                                                                 \
            _document->refuse(number, key, L"is not a value of its type");                                             \
    }
J3_SCALAR_TYPES(J3_ARCHIVE_SCALAR)
#undef J3_ARCHIVE_SCALAR

void J3JsonArchive::writeString(uint8 number, const J3String& value, const J3String& key)
{
    _document->put(number, key, value.to_string());
}

void J3JsonArchive::writeObject(uint8 number, const J3Object& object, const J3String& key)
{
    J3JsonArchive nested;
    object.archiveTo(&nested);
    _document->put(number, key, std::move(nested._document->writable()));
}

void J3JsonArchive::writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key)
{
    Array array;
    array.reserve(count);
    for (uint32 i = 0; i < count; ++i)
        array.push_back(itemOf(bytes[i]));
    _document->put(number, key, std::move(array));
}

void J3JsonArchive::readString(uint8 number, J3String* value, const J3String& key)
{
    const auto* const text = _document->get(number, key).getBoxed<std::string>();
    if (!text)
        _document->refuse(number, key, L"is not a text");
    *value = J3String::from_string(*text);
}

void J3JsonArchive::readObject(uint8 number, J3Object* object, const J3String& key)
{
    const auto* const items = _document->get(number, key).getBoxed<Object>();
    if (!items)
        _document->refuse(number, key, L"is not an object");
    J3JsonArchive nested(std::make_unique<Document>(items));
    object->unarchiveFrom(&nested);
}

void J3JsonArchive::readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key)
{
    const auto* const array = _document->get(number, key).getBoxed<Array>();
    if (!array)
        _document->refuse(number, key, L"is not an array");
    std::vector<uint8> values;
    values.reserve(array->size());
    for (const Value& element : *array)
        if (!read(element, &values.emplace_back()))
            _document->refuse(number, key, L"holds more than bytes");
    *bytes = std::move(values);
}

} // namespace Kivo
