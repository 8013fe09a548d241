// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Tokens of a text.
#include "Foundation/J3StringTokenizer.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(J3StringTokenizer, DropsEmptyTokensUnlessAsked)
{
    const auto joined = [](const J3String& text, const J3String& delimiters, bool keepEmpty) {
        J3StringTokenizer tokenizer(text, delimiters, keepEmpty);
        J3String all;
        for (J3String token; tokenizer.getToken(&token);)
            all += L"<" + token + L">";
        return all;
    };
    EXPECT_EQ(joined(L",a;;b,", L",;", false), L"<a><b>");
    EXPECT_EQ(joined(L",a;;b,", L",;", true), L"<><a><><b><>");
}
