// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The features of the language that scripts of a recorder rely on, run as a host runs them.
#include "support/LuaHost.h"

#include <gtest/gtest.h>

#include <filesystem>

using K7Test::LuaHost;

TEST(LuaLanguage, ReferenceScriptsHold)
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(K7_FIXTURES "/../Lua/scripts")) {
        Kivo::K7LuaState state;
        std::string report;
        state.setTraceSink([&](const Kivo::J3String& text) { report = text.to_string(); });
        ASSERT_TRUE(state.init(Kivo::J3String(entry.path().c_str()))) << entry.path();
        EXPECT_NO_THROW(state.runScript()) << entry.path() << "\n" << report;
        Kivo::J3String result;
        EXPECT_TRUE(state.readString(L"result", &result)) << entry.path();
        EXPECT_EQ(result, L"passed") << entry.path();
        ++count;
    }
    EXPECT_EQ(count, 4);
}
