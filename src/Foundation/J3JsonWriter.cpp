// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The text and CBOR forms of JSON values.
#include "Foundation/J3JsonValue_p.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace Kivo::J3Json {

Value::Value(Array array) : any(Boxed<Array>(std::move(array))) {}
Value::Value(Object object) : any(Boxed<Object>(std::move(object))) {}
Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

std::vector<std::pair<const std::string*, const Value*>> Object::inOrder() const
{
    std::vector<std::pair<const std::string*, const Value*>> ordered(_items.size());
    for (const auto& [name, item] : _items)
        ordered[item.place] = {&name, &item.value};
    return ordered;
}

namespace {

void write(std::string* out, const Value& value);
void write(std::vector<uint8>* out, const Value& value);

// Text.

void write(std::string* out, std::monostate) { *out += "null"; }

void write(std::string* out, bool value) { *out += value ? "true" : "false"; }

template <class Number>
void writeNumber(std::string* out, Number value)
{
    std::array<char, 32> room;
    const auto [end, error] = std::to_chars(room.data(), room.data() + room.size(), value);
    out->append(room.data(), end);
}

void write(std::string* out, int64 value) { writeNumber(out, value); }

void write(std::string* out, uint64 value) { writeNumber(out, value); }

void write(std::string* out, float64 value)
{
    if (!std::isfinite(value)) {
        *out += std::isnan(value) ? "\"NaN\"" : value < 0 ? "\"-Infinity\"" : "\"Infinity\"";
        return;
    }
    const std::size_t begin = out->size();
    writeNumber(out, value);
    if (out->find_first_of(".e", begin) == out->npos)
        *out += ".0"; // reads back as a float
}

void write(std::string* out, const std::string& text)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    constexpr std::string_view ESCAPED = "\"\\\b\f\n\r\t";
    constexpr std::string_view LETTERS = "\"\\bfnrt";
    *out += '"';
    for (const char c : text) {
        const std::size_t escape = ESCAPED.find(c);
        if (escape != ESCAPED.npos)
            out->append({'\\', LETTERS[escape]});
        else if (static_cast<uint8>(c) < 0x20)
            out->append({'\\', 'u', '0', '0', DIGITS[static_cast<uint8>(c) >> 4], DIGITS[c & 15]});
        else
            *out += c;
    }
    *out += '"';
}

void write(std::string* out, const Array& array)
{
    char separator = '[';
    for (const Value& value : array) {
        *out += std::exchange(separator, ',');
        write(out, value);
    }
    *out += array.empty() ? "[]" : "]";
}

void write(std::string* out, const Object& object)
{
    char separator = '{';
    for (const auto& [name, value] : object.inOrder()) {
        *out += std::exchange(separator, ',');
        write(out, *name);
        *out += ':';
        write(out, *value);
    }
    *out += object.size() == 0 ? "{}" : "}";
}

// CBOR.

enum Major : uint8 { UNSIGNED = 0, NEGATIVE = 1, TEXT = 3, ARRAY = 4, MAP = 5, SIMPLE = 7 };

void writeBigEndian(std::vector<uint8>* out, uint64 value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out->push_back(static_cast<uint8>(value >> shift));
}

void writeHead(std::vector<uint8>* out, Major major, uint64 argument)
{
    const auto head = static_cast<uint8>(major << 5);
    if (argument < 24)
        return out->push_back(static_cast<uint8>(head | argument));
    const int power = argument <= 0xFF ? 0 : argument <= 0xFFFF ? 1 : argument <= 0xFFFFFFFF ? 2 : 3;
    out->push_back(static_cast<uint8>(head | (24 + power)));
    writeBigEndian(out, argument, 1 << power);
}

void write(std::vector<uint8>* out, std::monostate) { writeHead(out, SIMPLE, 22); }

void write(std::vector<uint8>* out, bool value) { writeHead(out, SIMPLE, value ? 21 : 20); }

void write(std::vector<uint8>* out, int64 value)
{
    value < 0 ? writeHead(out, NEGATIVE, ~static_cast<uint64>(value))
              : writeHead(out, UNSIGNED, static_cast<uint64>(value));
}

void write(std::vector<uint8>* out, uint64 value) { writeHead(out, UNSIGNED, value); }

void write(std::vector<uint8>* out, float64 value)
{
    const bool isShort = std::isinf(value) || (std::abs(value) <= std::numeric_limits<float32>::max() &&
                                               float64{static_cast<float32>(value)} == value);
    out->push_back(static_cast<uint8>(SIMPLE << 5 | (isShort ? 26 : 27)));
    if (isShort)
        writeBigEndian(out, std::bit_cast<uint32>(static_cast<float32>(value)), 4);
    else
        writeBigEndian(out, std::bit_cast<uint64>(value), 8);
}

void write(std::vector<uint8>* out, const std::string& text)
{
    writeHead(out, TEXT, text.size());
    out->insert(out->end(), text.begin(), text.end());
}

void write(std::vector<uint8>* out, const Array& array)
{
    writeHead(out, ARRAY, array.size());
    for (const Value& value : array)
        write(out, value);
}

void write(std::vector<uint8>* out, const Object& object)
{
    writeHead(out, MAP, object.size());
    for (const auto& [name, value] : object.inOrder()) {
        write(out, *name);
        write(out, *value);
    }
}

// Either form.

template <class Out, class T>
void write(Out* out, const Boxed<T>& boxed)
{
    write(out, *boxed);
}

void write(std::string* out, const Value& value)
{
    std::visit([out](const auto& held) { write(out, held); }, value.any);
}

void write(std::vector<uint8>* out, const Value& value)
{
    std::visit([out](const auto& held) { write(out, held); }, value.any);
}

} // namespace

std::string toJson(const Object& object)
{
    std::string text;
    write(&text, object);
    return text;
}

std::vector<uint8> toCbor(const Object& object)
{
    std::vector<uint8> bytes;
    write(&bytes, object);
    return bytes;
}

} // namespace Kivo::J3Json
