// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What every kind of address does with texts.
#pragma once

#include "Foundation/J3String.h"

#include <gtest/gtest.h>

namespace Kivo {

/// Both overloads take each text and write it as @p expected, or, without one, refuse it and change nothing.
template <class T>
void expectText(const T& before, const char* expected, std::initializer_list<const char*> texts)
{
    for (const char* text : texts) {
        T narrow = before;
        T wide = before;
        EXPECT_EQ(narrow.fromString(text), expected != nullptr) << text;
        EXPECT_EQ(wide.fromString(J3String(text)), expected != nullptr) << text;
        EXPECT_EQ(narrow, wide) << text;
        EXPECT_EQ(narrow.toString(), expected ? J3String(expected) : before.toString()) << text;
    }
    EXPECT_FALSE(T().fromString(static_cast<const char*>(nullptr)));
}

} // namespace Kivo
