// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archive kept as a JSON document.
#include "Foundation/J3JsonArchive.h"

#include "Foundation/J3Exception.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace Kivo {

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t MAX_DEPTH = 64;

J3String fromUtf8(const std::string& text) { return J3String::from_string(text, j3Utf8Locale()); }

std::string itemName(uint8 number, const J3String& key)
{
    return key.isEmpty() ? std::to_string(number) : key.to_string();
}

bool nestsDeeperThan(std::size_t levels, const Json& value)
{
    if (!value.is_structured())
        return false;
    return levels == 0 || std::any_of(value.begin(), value.end(),
                                      [&](const Json& child) { return nestsDeeperThan(levels - 1, child); });
}

/// Walks over the structure of CBOR bytes without recursion, ahead of the parser, which recurses for every nested
/// container and for every indefinite-length string inside another one (which RFC 8949 does not allow).
class CborWalk {
public:
    explicit CborWalk(const std::vector<uint8>& bytes) : _bytes(bytes) {}

    /// @return whether the bytes are one item and nothing more, untagged and at most MAX_DEPTH deep
    bool isShallow()
    {
        do {
            if (!takeItem())
                return false;
            while (!_levels.empty() && _levels.back().items == 0)
                _levels.pop_back();
        } while (!_levels.empty());
        return _position == _bytes.size();
    }

private:
    enum Major : uint8 { BYTES = 2, TEXT = 3, ARRAY = 4, MAP = 5, TAG = 6 };

    /// What is still to come at one level: a number of items, or items without end until a break.
    struct Level {
        uint64 items;
        std::optional<uint8> chunksOf; ///< the only major type allowed, inside an indefinite-length string
    };

    static constexpr uint64 ENDLESS = std::numeric_limits<uint64>::max();
    static constexpr uint8 INDEFINITE = 31;
    static constexpr uint8 BREAK = 0xFF;

    bool takeItem()
    {
        if (_position == _bytes.size())
            return false;
        const uint8 head = _bytes[_position++];
        const uint8 major = head >> 5;
        const uint8 info = head & 31;
        if (head == BREAK)
            return endLevel();
        if (!_levels.empty()) {
            Level& level = _levels.back();
            if (level.chunksOf && (*level.chunksOf != major || info == INDEFINITE))
                return false;
            if (level.items != ENDLESS)
                --level.items;
        }
        if (info == INDEFINITE)
            return beginEndless(major);
        uint64 argument = info;
        return takeArgument(info, &argument) && takeContent(major, argument);
    }

    bool takeArgument(uint8 info, uint64* argument)
    {
        if (info < 24)
            return true;
        const std::size_t size = std::size_t{1} << (info - 24);
        if (info > 27 || size > rest())
            return false;
        *argument = 0;
        for (std::size_t i = 0; i < size; ++i)
            *argument = *argument << 8 | _bytes[_position++];
        return true;
    }

    bool takeContent(uint8 major, uint64 argument)
    {
        switch (major) {
        case BYTES:
        case TEXT:
            if (argument > rest())
                return false;
            _position += argument;
            return true;
        case ARRAY:
            return argument <= rest() && beginLevel({argument, {}});
        case MAP:
            return argument <= rest() && beginLevel({2 * argument, {}});
        default:
            return major != TAG;
        }
    }

    bool beginEndless(uint8 major)
    {
        if (major == BYTES || major == TEXT)
            return beginLevel({ENDLESS, major});
        return (major == ARRAY || major == MAP) && beginLevel({ENDLESS, {}});
    }

    bool beginLevel(Level level)
    {
        const bool container = !level.chunksOf;
        if (container && _levels.size() == MAX_DEPTH)
            return false;
        _levels.push_back(level);
        return true;
    }

    bool endLevel()
    {
        if (_levels.empty() || _levels.back().items != ENDLESS)
            return false;
        _levels.pop_back();
        return true;
    }

    [[nodiscard]] std::size_t rest() const { return _bytes.size() - _position; }

    const std::vector<uint8>& _bytes;
    std::size_t _position = 0;
    std::vector<Level> _levels;
};

template <class T>
bool isInteger(const Json& item, T* value)
{
    if (item.is_number_unsigned()) {
        const auto number = item.get<uint64>();
        *value = static_cast<T>(number);
        return std::in_range<T>(number);
    }
    if (item.is_number_integer()) {
        const auto number = item.get<int64>();
        *value = static_cast<T>(number);
        return std::in_range<T>(number);
    }
    return false;
}

template <class T>
bool isFloat(const Json& item, T* value)
{
    if (item.is_string()) {
        const auto& text = item.get_ref<const std::string&>();
        if (text == "NaN")
            *value = std::numeric_limits<T>::quiet_NaN();
        else
            *value = text == "-Infinity" ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity();
        return text == "NaN" || text == "Infinity" || text == "-Infinity";
    }
    if (!item.is_number())
        return false;
    const auto number = item.get<float64>();
    if (std::isfinite(number) && std::abs(number) > std::numeric_limits<T>::max())
        return false;
    *value = static_cast<T>(number);
    return true;
}

Json floatItem(float64 value)
{
    if (std::isnan(value))
        return "NaN";
    if (std::isinf(value))
        return value < 0 ? "-Infinity" : "Infinity";
    return value;
}

} // namespace

struct J3JsonArchive::Document {
    Json items = Json::object();

    void put(uint8 number, const J3String& key, Json item) { items[itemName(number, key)] = std::move(item); }

    const Json& get(uint8 number, const J3String& key) const
    {
        const auto found = items.find(itemName(number, key));
        if (found == items.end())
            refuse(number, key, L"is missing");
        return *found;
    }

    template <class T>
    void getInteger(uint8 number, const J3String& key, T* value) const
    {
        T integer{};
        if (!isInteger(get(number, key), &integer))
            refuse(number, key, L"is no integer of its type");
        *value = integer;
    }

    template <class T>
    void getFloat(uint8 number, const J3String& key, T* value) const
    {
        T real{};
        if (!isFloat(get(number, key), &real))
            refuse(number, key, L"is no number of its type");
        *value = real;
    }

    [[noreturn]] void refuse(uint8 number, const J3String& key, const wchar_t* why) const
    {
        throw J3RangeException(L"archive item " + fromUtf8(itemName(number, key)) + L" " + why, 1,
                               static_cast<int64>(items.size()), number);
    }

    bool take(Json parsed)
    {
        if (!parsed.is_object() || nestsDeeperThan(MAX_DEPTH, parsed))
            return false;
        items = std::move(parsed);
        return true;
    }
};

J3JsonArchive::J3JsonArchive() : _document(std::make_unique<Document>()) {}

J3JsonArchive::J3JsonArchive(const J3JsonArchive& other)
    : J3Archive(other), _document(std::make_unique<Document>(*other._document))
{}

J3JsonArchive& J3JsonArchive::operator=(const J3JsonArchive& other)
{
    *_document = *other._document;
    return *this;
}

J3JsonArchive::~J3JsonArchive() = default;

J3JsonArchive* J3JsonArchive::clone() const { return new J3JsonArchive(*this); }

J3String J3JsonArchive::toString() const { return fromUtf8(toJson()); }

std::string J3JsonArchive::toJson() const
{
    return _document->items.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::vector<uint8> J3JsonArchive::toCbor() const { return Json::to_cbor(_document->items); }

bool J3JsonArchive::fromJson(const std::string& text)
try {
    // The parser takes a zero byte for the end and does not look at what follows.
    return text.find('\0') == std::string::npos && _document->take(Json::parse(text, nullptr, false));

} catch (const std::exception&) {
    return false;
}

bool J3JsonArchive::fromCbor(const std::vector<uint8>& bytes)
try {
    return CborWalk(bytes).isShallow() && _document->take(Json::from_cbor(bytes, true, false));

} catch (const std::exception&) {
    return false;
}

void J3JsonArchive::writeBool(uint8 number, bool value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeInt8(uint8 number, int8 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeInt16(uint8 number, int16 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeInt32(uint8 number, int32 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeInt64(uint8 number, int64 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeUint8(uint8 number, uint8 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeUint16(uint8 number, uint16 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeUint32(uint8 number, uint32 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeUint64(uint8 number, uint64 value, const J3String& key) { _document->put(number, key, value); }

void J3JsonArchive::writeFloat32(uint8 number, float32 value, const J3String& key)
{
    _document->put(number, key, floatItem(value));
}

void J3JsonArchive::writeFloat64(uint8 number, float64 value, const J3String& key)
{
    _document->put(number, key, floatItem(value));
}

void J3JsonArchive::writeString(uint8 number, const J3String& value, const J3String& key)
{
    _document->put(number, key, value.to_string());
}

void J3JsonArchive::writeObject(uint8 number, const J3Object& object, const J3String& key)
{
    J3JsonArchive nested;
    object.archiveTo(&nested);
    _document->put(number, key, std::move(nested._document->items));
}

void J3JsonArchive::writeUint8Array(uint8 number, const uint8* bytes, uint32 count, const J3String& key)
{
    _document->put(number, key, Json::array_t(bytes, bytes + count));
}

void J3JsonArchive::readBool(uint8 number, bool* value, const J3String& key)
{
    const Json& item = _document->get(number, key);
    if (!item.is_boolean())
        _document->refuse(number, key, L"is no bool");
    *value = item.get<bool>();
}

void J3JsonArchive::readInt8(uint8 number, int8* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readInt16(uint8 number, int16* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readInt32(uint8 number, int32* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readInt64(uint8 number, int64* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readUint8(uint8 number, uint8* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readUint16(uint8 number, uint16* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readUint32(uint8 number, uint32* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readUint64(uint8 number, uint64* value, const J3String& key)
{
    _document->getInteger(number, key, value);
}

void J3JsonArchive::readFloat32(uint8 number, float32* value, const J3String& key)
{
    _document->getFloat(number, key, value);
}

void J3JsonArchive::readFloat64(uint8 number, float64* value, const J3String& key)
{
    _document->getFloat(number, key, value);
}

void J3JsonArchive::readString(uint8 number, J3String* value, const J3String& key)
{
    const Json& item = _document->get(number, key);
    if (!item.is_string())
        _document->refuse(number, key, L"is no text");
    *value = fromUtf8(item.get_ref<const std::string&>());
}

void J3JsonArchive::readObject(uint8 number, J3Object* object, const J3String& key)
{
    const Json& item = _document->get(number, key);
    if (!item.is_object())
        _document->refuse(number, key, L"is no object");
    J3JsonArchive nested;
    nested._document->items = item;
    object->unarchiveFrom(&nested);
}

void J3JsonArchive::readUint8Array(uint8 number, std::vector<uint8>* bytes, const J3String& key)
{
    const Json& item = _document->get(number, key);
    if (!item.is_array())
        _document->refuse(number, key, L"is no array");
    std::vector<uint8> values;
    values.reserve(item.size());
    for (const Json& element : item)
        if (!isInteger(element, &values.emplace_back()))
            _document->refuse(number, key, L"holds more than bytes");
    *bytes = std::move(values);
}

} // namespace Kivo
