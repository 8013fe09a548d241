// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Wide text value: formatting, conversion, search.
#pragma once

#include "Foundation/J3Object.h"

#include <compare>
#include <cstdarg>
#include <locale>
#include <string>
#include <string_view>

namespace Kivo {

/// The UTF-8 conversion as a locale; a reference that is valid from the first use on, in any static initialiser too.
J3_API const std::locale& j3Utf8Locale();

/// The UTF-8 conversion as a global: what every text handed to the operating system goes through.
inline const std::locale& STD_LOCALE_UTF8 = j3Utf8Locale();

/// Format @p format and its arguments as J3String::format() does, and append the text to @p out.
/// @p out may not be among the arguments.
J3_API void _j3_wstring_vformat(std::wstring* out, const std::wstring& format, std::va_list arguments);

/// Text of four-byte characters; a value. Narrow text is UTF-8 wherever no other encoding is named; ill-formed input
/// becomes U+FFFD, never an exception and never a cut text.
///
/// *Threads*: as std::wstring.
class J3_API J3String : public J3Object {
public:
    /// "Not found" as a position, "to the end" as a length.
    static constexpr uint32 NPOS = 0xFFFFFFFF;

    J3String() = default;

    /// Implicit, because every operation that takes a text is called with a literal.
    /// @{
    J3String(const wchar_t* text); ///< null is the empty text
    J3String(const char* text);    ///< from UTF-8; null is the empty text
    J3String(std::wstring text);
    /// @}

    /// From a text in the encoding of the locale; null is the empty text.
    J3String(const char* text, const std::locale& encoding);

    J3String(const J3String&) = default;
    J3String(J3String&&) noexcept = default;
    J3String& operator=(const J3String&) = default;
    J3String& operator=(J3String&&) noexcept = default;
    ~J3String() override = default;

    [[nodiscard]] J3String* clone() const override;
    void archiveTo(J3Archive* archive) const override;
    void unarchiveFrom(J3Archive* archive) override;

    /// Write the length in UTF-8 bytes as a uint32, then the bytes.
    void serializeTo(J3Stream* stream) const override;

    /// Read what serializeTo() wrote; a length beyond what the stream holds is a J3RangeException.
    void deserializeFrom(J3Stream* stream) override;
    [[nodiscard]] std::size_t hash() const override;
    [[nodiscard]] J3String toString() const override;

    /// Replace the contents with printf-style output.
    ///
    /// All printf conversions, flags, widths, precisions, `*` and length words work, independent of the C locale;
    /// widths and precisions beyond 65535 count as 65535. `%s` takes a narrow UTF-8 text (its precision counts bytes, a
    /// character cut in two is left out), `%S` and `%ls` a wide one, `%@` a pointer to a J3Object, printed by its
    /// toString(); of these a null pointer prints "(null)". `%c` takes an int, the code point of one character. A
    /// conversion that is not known is copied as it stands; so is `%n`, which takes its argument and stores nothing.
    /// The string itself may be among the arguments. A null @p format is an empty one.
    /// @return this string
    J3String& format(const wchar_t* format, ...);

    /// Append in the same way. @return this string
    J3String& appendf(const wchar_t* format, ...);

    /// format() with its arguments in a list.
    J3String& vformat(const wchar_t* format, std::va_list arguments);

    /// The text in UTF-8.
    [[nodiscard]] std::string to_string() const;

    /// The text in the encoding of @p encoding's character conversion facet; what it has no character for becomes "?".
    [[nodiscard]] std::string to_string(const std::locale& encoding) const;

    /// The text in an encoding that iconv knows by name ("EUC-KR"), what it has no character for becoming "?";
    /// empty when the name is not known.
    /// @throws J3Exception with the errno (EMFILE, ENFILE) when the system gives no descriptor to load the encoding
    /// with
    [[nodiscard]] std::string to_string(const std::string& encodingName) const;

    /// The text that @p text is in UTF-8; what is ill-formed becomes U+FFFD.
    [[nodiscard]] static J3String from_string(std::string_view text);

    /// The reverse of to_string(): what is ill-formed becomes U+FFFD, an unknown name gives the empty text.
    /// @throws J3Exception as to_string() does, for an encoding by name
    /// @{
    [[nodiscard]] static J3String from_string(const std::string& text, const std::locale& encoding);
    [[nodiscard]] static J3String from_string(const std::string& text, const std::string& encodingName);
    /// @}

    [[nodiscard]] const wchar_t* c_str() const { return _text.c_str(); }
    [[nodiscard]] const std::wstring& wstring() const { return _text; }
    [[nodiscard]] uint32 length() const { return static_cast<uint32>(_text.size()); }
    [[nodiscard]] bool isEmpty() const { return _text.empty(); }
    void clear() { _text.clear(); }

    /// The characters in order; valid until the text changes.
    /// @{
    [[nodiscard]] std::wstring::const_iterator begin() const { return _text.begin(); }
    [[nodiscard]] std::wstring::const_iterator end() const { return _text.end(); }
    /// @}

    /// The position of the first @p text at or after @p start, NPOS when there is none. An empty text is found at once.
    [[nodiscard]] uint32 find(const J3String& text, uint32 start = 0) const;

    /// At most @p length characters from @p position on; empty when the position lies beyond the end.
    [[nodiscard]] J3String substring(uint32 position, uint32 length = NPOS) const;

    /// Replace the first @p what, or @p all of them, by @p with; an empty @p what is found nowhere.
    J3String& replace(const J3String& what, const J3String& with, bool all);

    /// Remove white space in place: blank, tab, line feed, vertical tab, form feed, carriage return.
    /// @{
    J3String& trimLeft();
    J3String& trimRight();
    /// @}

    /// The leading decimal number as strtol reads it, clamped to 32 bits; 0 when there is none.
    [[nodiscard]] int32 toInt32() const;

    /// The leading decimal number as strtoull reads it; 0 when there is none.
    [[nodiscard]] uint64 toUint64() const;

    J3String& operator+=(const J3String& other);

    friend J3String operator+(J3String left, const J3String& right) { return std::move(left += right); }
    friend bool operator==(const J3String& left, const J3String& right) { return left._text == right._text; }
    friend bool operator==(const J3String& left, const wchar_t* right) ///< null is the empty text
    {
        return right ? left._text == right : left._text.empty();
    }
    friend std::strong_ordering operator<=>(const J3String& left, const J3String& right)
    {
        return left._text <=> right._text;
    }

private:
    std::wstring _text;
};

} // namespace Kivo

/// @cond Lets a J3String be the key of an unordered container.
template <>
struct std::hash<Kivo::J3String> {
    std::size_t operator()(const Kivo::J3String& text) const { return text.hash(); }
};
/// @endcond
