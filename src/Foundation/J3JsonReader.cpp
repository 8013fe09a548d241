// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Builds JSON values from their text and CBOR forms, within limits.
#include "Foundation/J3JsonValue_p.h"
#include "Foundation/J3TextCodec_p.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <optional>

namespace Kivo::J3Json {
namespace {

/// Told by the parser what comes next; false ends it. What is under way lies in a stack, so that no level refers to
/// another that may still move.
class Builder {
public:
    using number_integer_t = int64;
    using number_unsigned_t = uint64;
    using number_float_t = float64;
    using string_t = std::string;
    using binary_t = nlohmann::json::binary_t;

    [[nodiscard]] Object take() { return std::move(std::get<Object>(_document)); }

    bool null() { return add({}); }
    bool boolean(bool value) { return add(value); }
    bool number_integer(int64 value) { return value < 0 ? add(value) : add(static_cast<uint64>(value)); }
    bool number_unsigned(uint64 value) { return add(value); }
    bool number_float(float64 value, const std::string& /*text*/) { return add(value); }
    bool string(std::string& text) { return add(wellFormed(std::move(text))); }
    bool binary(binary_t& bytes)
    {
        Array array;
        array.reserve(bytes.size());
        for (const uint8 byte : bytes)
            array.emplace_back(uint64{byte});
        return add(std::move(array));
    }

    bool start_object(std::size_t /*count*/) { return begin(Object()); }
    bool key(std::string& name)
    {
        _levels.back().name = wellFormed(std::move(name));
        return true;
    }
    bool end_object() { return end(); }
    bool start_array(std::size_t /*count*/) { return begin(Array()); }
    bool end_array() { return end(); }
    static bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) { return false; }

private:
    using Container = std::variant<Object, Array>;

    struct Level {
        Container container;
        std::string name; ///< of the value that comes next, in an object
    };

    static std::string wellFormed(std::string text)
    {
        const bool ascii = std::all_of(text.begin(), text.end(), [](char c) { return static_cast<uint8>(c) < 0x80; });
        return ascii ? text : J3TextCodec::encodeUtf8(J3TextCodec::decodeUtf8(text));
    }

    bool begin(Container container)
    {
        const bool isDocument = _levels.empty() && std::holds_alternative<Object>(container);
        if (_levels.size() == MAX_DEPTH || (_levels.empty() && !isDocument))
            return false;
        _levels.push_back({std::move(container), {}});
        return true;
    }

    bool end()
    {
        Container ended = std::move(_levels.back().container);
        _levels.pop_back();
        if (_levels.empty()) {
            _document = std::move(ended);
            return true;
        }
        return std::visit([this](auto& container) { return add(std::move(container)); }, ended);
    }

    bool add(Value value)
    {
        if (_levels.empty())
            return false;
        Level& level = _levels.back();
        if (auto* const object = std::get_if<Object>(&level.container))
            (*object)[std::move(level.name)] = std::move(value);
        else
            std::get<Array>(level.container).push_back(std::move(value));
        return true;
    }

    std::vector<Level> _levels;
    Container _document;
};

/// Walks over the structure of CBOR bytes without recursion, ahead of the parser, which recurses for every nested
/// container and for every indefinite-length string inside another one (which RFC 8949 does not allow), and which gives
/// a negative integer that 64 bits cannot hold as another number.
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

    enum Major : uint8 { NEGATIVE = 1, BYTES = 2, TEXT = 3, ARRAY = 4, MAP = 5, TAG = 6 };

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
        case NEGATIVE:
            return argument <= static_cast<uint64>(std::numeric_limits<int64>::max());
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

} // namespace

bool fromJson(std::string_view text, Object* out)
{
    // The parser takes a zero byte for the end and does not look at what follows.
    Builder builder;
    if (text.size() > MAX_SIZE || text.find('\0') != text.npos || !nlohmann::json::sax_parse(text, &builder))
        return false;
    *out = builder.take();
    return true;
}

bool fromCbor(const std::vector<uint8>& bytes, Object* out)
{
    Builder builder;
    if (bytes.size() > MAX_SIZE || !CborWalk(bytes).isShallow() ||
        !nlohmann::json::sax_parse(bytes, &builder, nlohmann::json::input_format_t::cbor))
        return false;
    *out = builder.take();
    return true;
}

} // namespace Kivo::J3Json
