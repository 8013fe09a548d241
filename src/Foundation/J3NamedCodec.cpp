// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversion between wide text and the encodings of locales and of iconv.
#include "Base/UniqueFd_p.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3String.h"
#include "Foundation/J3TextCodec_p.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cwchar>
#include <new>

#include <fcntl.h>
#include <iconv.h>

namespace Kivo::J3TextCodec {
namespace {

using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;

const Facet& facetOf(const std::locale& encoding) { return std::use_facet<Facet>(encoding); }

bool isUtf8(const std::locale& encoding) { return &facetOf(encoding) == &facetOf(j3Utf8Locale()); }

class Iconv {
public:
    Iconv(const std::string& to, const std::string& from)
    {
        if (!isName(to) || !isName(from))
            return;
        requireDescriptor();
        _handle = iconv_open(to.c_str(), from.c_str());
        if (!*this && errno == ENOMEM)
            throw std::bad_alloc();
    }

    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    ~Iconv()
    {
        if (*this)
            iconv_close(_handle);
    }

    explicit operator bool() const { return _handle != NONE; }

    // Convert as far as it goes. Gives 0 at the end of the input, EILSEQ or EINVAL where it stopped before.
    template <class From, class To>
    int run(std::basic_string_view<From>* input, std::basic_string<To>* out)
    {
        char* from = const_cast<char*>(reinterpret_cast<const char*>(input->data()));
        std::size_t left = input->size() * sizeof(From);
        const int error = run(&from, &left, out);
        input->remove_prefix(input->size() - left / sizeof(From));
        return error;
    }

    // Write what is held back: a character that the next one could have joined, the way back to the initial state.
    template <class To>
    void finish(std::basic_string<To>* out)
    {
        run<To>(nullptr, nullptr, out);
    }

private:
    template <class To>
    int run(char** from, std::size_t* left, std::basic_string<To>* out)
    {
        std::array<To, 256> room;
        for (;;) {
            char* to = reinterpret_cast<char*>(room.data());
            std::size_t free = sizeof room;
            const bool failed = iconv(_handle, from, left, &to, &free) == static_cast<std::size_t>(-1);
            const int error = failed ? errno : 0;
            out->append(room.data(), (sizeof room - free) / sizeof(To));
            if (error != E2BIG)
                return error;
        }
    }

    // Without a descriptor to load an encoding with, the C library takes every name for an unknown one; when that is
    // its first look, for the rest of the process.
    static void requireDescriptor()
    {
        const UniqueFd free(open("/", O_PATH | O_CLOEXEC));
        if (!free && (errno == EMFILE || errno == ENFILE))
            throw J3Exception(L"no descriptor to load a character encoding with", errno);
    }

    // No name ("", "//TRANSLIT", "?") would be the process locale's encoding, which no result may depend on.
    static bool isName(const std::string& name)
    {
        return !name.empty() && std::isalnum(static_cast<unsigned char>(name.front()));
    }

    static inline const iconv_t NONE = reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)

    iconv_t _handle = NONE;
};

// How many bytes a decoder steps over to come past what it cannot read.
std::size_t unitOf(const std::string& encodingName)
{
    const std::size_t unit = encode(L"??", encodingName).size() - encode(L"?", encodingName).size();
    return unit > 0 ? unit : 1;
}

} // namespace

std::string encode(std::wstring_view text, const std::locale& encoding)
{
    if (isUtf8(encoding))
        return encodeUtf8(text);
    const Facet& facet = facetOf(encoding);
    std::string out;
    std::mbstate_t state{};
    std::array<char, 256> room;
    const wchar_t* const end = text.data() + text.size();
    for (const wchar_t* from = text.data(); from != end;) {
        const wchar_t* const before = from;
        char* to = room.data();
        const auto result = facet.out(state, from, end, from, to, to + room.size(), to);
        out.append(room.data(), to);
        const bool stuck = result == Facet::error || (from == before && to == room.data());
        if (stuck && from != end) {
            out += '?';
            ++from;
        }
    }
    char* to = room.data();
    if (facet.unshift(state, to, to + room.size(), to) == Facet::ok)
        out.append(room.data(), to);
    return out;
}

std::wstring decode(std::string_view text, const std::locale& encoding)
{
    if (isUtf8(encoding))
        return decodeUtf8(text);
    const Facet& facet = facetOf(encoding);
    std::wstring out;
    std::mbstate_t state{};
    std::array<wchar_t, 256> room;
    const char* const end = text.data() + text.size();
    for (const char* from = text.data(); from != end;) {
        const char* const before = from;
        wchar_t* to = room.data();
        const auto result = facet.in(state, from, end, from, to, to + room.size(), to);
        out.append(room.data(), to);
        const bool stuck = result == Facet::error || (from == before && to == room.data());
        if (stuck && from != end) {
            out += REPLACEMENT;
            ++from;
            state = {};
        }
    }
    if (!std::mbsinit(&state))
        out += REPLACEMENT;
    return out;
}

std::string encode(std::wstring_view text, const std::string& encodingName)
{
    std::string out;
    Iconv converter(encodingName, "WCHAR_T");
    if (!converter)
        return out;
    while (converter.run(&text, &out) != 0 && !text.empty()) {
        std::wstring_view mark(L"?");
        converter.run(&mark, &out);
        text.remove_prefix(1);
    }
    converter.finish(&out);
    return out;
}

std::wstring decode(std::string_view text, const std::string& encodingName)
{
    std::wstring out;
    Iconv converter("WCHAR_T", encodingName);
    if (!converter)
        return out;
    std::size_t unit = 0;
    while (const int error = converter.run(&text, &out)) {
        if (text.empty())
            break;
        if (unit == 0)
            unit = unitOf(encodingName);
        out += REPLACEMENT;
        text.remove_prefix(error == EINVAL ? text.size() : std::min(text.size(), unit));
    }
    converter.finish(&out);
    return out;
}

} // namespace Kivo::J3TextCodec
