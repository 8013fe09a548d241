// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Strict conversion of texts to integers.
#include "Core/K7Cast.h"

#include "Base/TextScanner_p.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"

namespace Kivo::K7 {

template <CastTarget T>
bool castFrom(T* out, const J3String& text, bool hexadecimal, bool trim)
{
    if (!J3_REQUIRE_ARGUMENT(out, "Core/K7Cast"))
        return false;
    const std::string whole = text.to_string();
    std::string digits(trim ? trimmed(whole) : std::string_view(whole));
    const std::size_t sign = digits.starts_with('-') ? 1 : 0;
    if (hexadecimal && (digits.compare(sign, 2, "0x") == 0 || digits.compare(sign, 2, "0X") == 0)) {
        digits.erase(sign, 2);
        if (digits.find('-', sign) == sign)
            return false;
    }
    const std::optional<T> value = wholeNumber<T>(digits, hexadecimal ? 16 : 10);
    if (value)
        *out = *value;
    return value.has_value();
}

template <CastTarget T>
void castFromThrowable(T* out, const J3String& text, bool hexadecimal, bool trim)
{
    if (!castFrom(out, text, hexadecimal, trim))
        throw J3Exception(J3String().format(L"not a number in range: \"%@\"", &text));
}

#define K7_CAST(Type)                                                                                                  \
    template K7CORE_API bool castFrom(Type*, const J3String&, bool, bool);                                             \
    template K7CORE_API void castFromThrowable(Type*, const J3String&, bool, bool);
K7_CAST(signed char)
K7_CAST(unsigned char)
K7_CAST(short)
K7_CAST(unsigned short)
K7_CAST(int)
K7_CAST(unsigned int)
K7_CAST(long)
K7_CAST(unsigned long)
K7_CAST(long long)
K7_CAST(unsigned long long)
#undef K7_CAST

} // namespace Kivo::K7
