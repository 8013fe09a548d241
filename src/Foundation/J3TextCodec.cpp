// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversion between wide text and UTF-8, with an express lane for ASCII, and the UTF-8 locale.
#include "Foundation/J3Immortal.h"
#include "Foundation/J3String.h"
#include "Foundation/J3TextCodec_p.h"

#include <utf8/unchecked.h>

#include <algorithm>
#include <array>
#include <type_traits>

namespace Kivo {
namespace J3TextCodec {
namespace {

// Copy the ASCII characters that the input begins with; blocks of a fixed size are what the compiler vectorises.
template <class From, class To>
std::size_t copyAscii(const From* from, std::size_t count, To* to)
{
    using Bits = std::make_unsigned_t<From>;
    constexpr std::size_t BLOCK = 32;
    std::size_t done = 0;
    for (; count - done >= BLOCK; done += BLOCK) {
        Bits all = 0;
        for (std::size_t i = 0; i < BLOCK; ++i)
            all = static_cast<Bits>(all | static_cast<Bits>(from[done + i]));
        if (all > 0x7F)
            break;
        for (std::size_t i = 0; i < BLOCK; ++i)
            to[done + i] = static_cast<To>(from[done + i]);
    }
    for (; done < count && static_cast<Bits>(from[done]) <= 0x7F; ++done)
        to[done] = static_cast<To>(from[done]);
    return done;
}

enum class Form { WELL_FORMED, ILL_FORMED, CUT };

// What stands at the beginning of some UTF-8: a character, the longest part of one, or one byte that begins none.
struct Sequence {
    Form form;
    std::ptrdiff_t length;
};

Sequence sequenceAt(const char* from, const char* end)
{
    const auto byteAt = [&](std::ptrdiff_t index) { return static_cast<unsigned char>(from[index]); };
    const unsigned lead = byteAt(0);
    if (lead <= 0x7F)
        return {Form::WELL_FORMED, 1};
    if (lead < 0xC2 || lead > 0xF4)
        return {Form::ILL_FORMED, 1};
    // The second byte's range keeps overlong forms, surrogates and what lies beyond U+10FFFF out.
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    const std::ptrdiff_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::ptrdiff_t index = 1; index < length; ++index, low = 0x80, high = 0xBF) {
        if (from + index == end)
            return {Form::CUT, index};
        if (byteAt(index) < low || byteAt(index) > high)
            return {Form::ILL_FORMED, index};
    }
    return {Form::WELL_FORMED, length};
}

wchar_t decodeOne(const char* from, Form form)
{
    return form == Form::WELL_FORMED ? static_cast<wchar_t>(utf8::unchecked::next(from)) : REPLACEMENT;
}

char* encodeOne(wchar_t character, char* to)
{
    return utf8::unchecked::append(static_cast<utf8::uint32_t>(isScalar(character) ? character : REPLACEMENT), to);
}

std::size_t encodedLength(std::wstring_view text)
{
    std::size_t length = text.size();
    for (const wchar_t character : text) {
        const auto code = static_cast<char32_t>(isScalar(character) ? character : REPLACEMENT);
        length += static_cast<std::size_t>(code > 0x7F) + (code > 0x7FF) + (code > 0xFFFF);
    }
    return length;
}

// UTF-8 as streams want it: piecewise, a sequence cut by the end of a piece left for the next one.
class Utf8Facet : public std::codecvt<wchar_t, char, std::mbstate_t> {
protected:
    result do_out(state_type&, const wchar_t* from, const wchar_t* end, const wchar_t*& next, char* to, char* toEnd,
                  char*& toNext) const override
    {
        std::array<char, 4> bytes{};
        for (next = from, toNext = to; next != end; ++next) {
            const std::ptrdiff_t length = encodeOne(*next, bytes.data()) - bytes.data();
            if (length > toEnd - toNext)
                return partial;
            toNext = std::copy_n(bytes.data(), length, toNext);
        }
        return ok;
    }

    result do_in(state_type&, const char* from, const char* end, const char*& next, wchar_t* to, wchar_t* toEnd,
                 wchar_t*& toNext) const override
    {
        for (next = from, toNext = to; next != end;) {
            const Sequence sequence = sequenceAt(next, end);
            if (toNext == toEnd || sequence.form == Form::CUT)
                return partial;
            *toNext++ = decodeOne(next, sequence.form);
            next += sequence.length;
        }
        return ok;
    }

    int do_length(state_type&, const char* from, const char* end, std::size_t most) const override
    {
        const char* at = from;
        for (; at != end && most > 0; --most) {
            const Sequence sequence = sequenceAt(at, end);
            if (sequence.form == Form::CUT)
                break;
            at += sequence.length;
        }
        return static_cast<int>(at - from);
    }

    result do_unshift(state_type&, char* to, char*, char*& toNext) const override
    {
        toNext = to;
        return noconv;
    }

    int do_encoding() const noexcept override { return 0; }

    bool do_always_noconv() const noexcept override { return false; }

    int do_max_length() const noexcept override { return 4; }
};

} // namespace

std::size_t decodeUtf8(std::string_view text, wchar_t* out)
{
    const char* const end = text.data() + text.size();
    const std::size_t ascii = copyAscii(text.data(), text.size(), out);
    wchar_t* to = out + ascii;
    for (const char* from = text.data() + ascii; from != end;) {
        const Sequence sequence = sequenceAt(from, end);
        *to++ = decodeOne(from, sequence.form);
        from += sequence.length;
    }
    return static_cast<std::size_t>(to - out);
}

std::wstring decodeUtf8(std::string_view text)
{
    std::wstring out(text.size(), L'\0');
    out.resize(decodeUtf8(text, out.data()));
    return out;
}

std::string_view withoutCutSequence(std::string_view text)
{
    const char* const end = text.data() + text.size();
    for (std::size_t length = 1; length <= std::min<std::size_t>(text.size(), 3); ++length)
        if ((*(end - length) & 0xC0) != 0x80) {
            if (sequenceAt(end - length, end).form == Form::CUT)
                text.remove_suffix(length);
            break;
        }
    return text;
}

std::string encodeUtf8(std::wstring_view text)
{
    std::string out(text.size(), '\0');
    const std::size_t ascii = copyAscii(text.data(), text.size(), out.data());
    if (ascii == text.size())
        return out;
    text.remove_prefix(ascii);
    out.resize(ascii + encodedLength(text));
    char* to = out.data() + ascii;
    for (const wchar_t character : text)
        to = encodeOne(character, to);
    return out;
}

} // namespace J3TextCodec

const std::locale& j3Utf8Locale()
{
    static const J3Immortal<std::locale> utf8(std::locale::classic(), new J3TextCodec::Utf8Facet);
    return *utf8;
}

} // namespace Kivo
