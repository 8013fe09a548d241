// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The wide text value: construction, storage, search, numbers.
#include "Foundation/J3String.h"

#include "Foundation/J3Archive.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3Stream.h"
#include "Foundation/J3TextCodec_p.h"

#include <algorithm>
#include <cwchar>
#include <functional>
#include <limits>

namespace Kivo {
namespace {

constexpr const wchar_t* WHITE_SPACE = L" \t\n\v\f\r";

constexpr const char* SOURCE = "Foundation/J3String";

} // namespace

J3String::J3String(const wchar_t* text) : _text(text ? text : L"") {}

J3String::J3String(const char* text) : _text(J3TextCodec::decodeUtf8(text ? text : "")) {}

J3String::J3String(std::wstring text) : _text(std::move(text)) {}

J3String::J3String(const char* text, const std::locale& encoding)
    : _text(J3TextCodec::decode(text ? text : "", encoding))
{}

J3String* J3String::clone() const { return new J3String(*this); }

void J3String::archiveTo(J3Archive* archive) const
{
    if (J3_REQUIRE_ARGUMENT(archive, SOURCE))
        archive->writeString(1, *this, J3String());
}

void J3String::unarchiveFrom(J3Archive* archive)
{
    if (J3_REQUIRE_ARGUMENT(archive, SOURCE))
        archive->readString(1, this, J3String());
}

void J3String::serializeTo(J3Stream* stream) const
{
    if (!J3_REQUIRE_ARGUMENT(stream, SOURCE))
        return;
    const std::string bytes = to_string();
    stream->writeUint32(static_cast<uint32>(bytes.size()));
    stream->writeUint8Array(reinterpret_cast<const uint8*>(bytes.data()), static_cast<uint32>(bytes.size()));
}

void J3String::deserializeFrom(J3Stream* stream)
{
    if (!J3_REQUIRE_ARGUMENT(stream, SOURCE))
        return;
    const uint32 start = stream->position();
    uint32 size = 0;
    stream->readUint32(&size);
    if (const uint32 rest = stream->remains(); size > rest) {
        stream->moveTo(start);
        throw J3RangeException(L"string", 0, rest, size);
    }
    std::string bytes(size, '\0');
    stream->readUint8Array(reinterpret_cast<uint8*>(bytes.data()), size);
    _text = J3TextCodec::decodeUtf8(bytes);
}

std::size_t J3String::hash() const { return std::hash<std::wstring>()(_text); }

J3String J3String::toString() const { return *this; }

std::string J3String::to_string() const { return J3TextCodec::encodeUtf8(_text); }

std::string J3String::to_string(const std::locale& encoding) const { return J3TextCodec::encode(_text, encoding); }

std::string J3String::to_string(const std::string& encodingName) const
{
    return J3TextCodec::encode(_text, encodingName);
}

J3String J3String::from_string(std::string_view text) { return J3TextCodec::decodeUtf8(text); }

J3String J3String::from_string(const std::string& text, const std::locale& encoding)
{
    return J3TextCodec::decode(text, encoding);
}

J3String J3String::from_string(const std::string& text, const std::string& encodingName)
{
    return J3TextCodec::decode(text, encodingName);
}

uint32 J3String::find(const J3String& text, uint32 start) const
{
    const std::size_t position = _text.find(text._text, start);
    return position == std::wstring::npos ? NPOS : static_cast<uint32>(position);
}

J3String J3String::substring(uint32 position, uint32 length) const
{
    return position < _text.size() ? J3String(_text.substr(position, length)) : J3String();
}

J3String& J3String::replace(const J3String& what, const J3String& with, bool all)
{
    if (what.isEmpty())
        return *this;
    std::wstring result;
    std::size_t copied = 0;
    for (std::size_t found = 0; (found = _text.find(what._text, copied)) != std::wstring::npos;) {
        result.append(_text, copied, found - copied).append(with._text);
        copied = found + what._text.size();
        if (!all)
            break;
    }
    if (copied != 0)
        _text = std::move(result.append(_text, copied));
    return *this;
}

J3String& J3String::trimLeft()
{
    _text.erase(0, _text.find_first_not_of(WHITE_SPACE));
    return *this;
}

J3String& J3String::trimRight()
{
    _text.erase(_text.find_last_not_of(WHITE_SPACE) + 1);
    return *this;
}

int32 J3String::toInt32() const
{
    using Limits = std::numeric_limits<int32>;
    const long long number = std::wcstoll(c_str(), nullptr, 10);
    return static_cast<int32>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

uint64 J3String::toUint64() const { return std::wcstoull(c_str(), nullptr, 10); }

J3String& J3String::operator+=(const J3String& other)
{
    _text += other._text;
    return *this;
}

} // namespace Kivo
