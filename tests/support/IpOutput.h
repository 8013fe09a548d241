// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What ip(8) tells of the sandbox's network, to compare with.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

namespace K7Test {

using Json = nlohmann::json;

/// The document that "ip -j ARGUMENTS" prints; empty when it prints none.
inline Json ipJson(const std::string& arguments)
{
    FILE* const tool = ::popen(("ip -j " + arguments).c_str(), "r");
    EXPECT_NE(tool, nullptr);
    std::string text;
    for (int c = 0; tool && (c = std::fgetc(tool)) != EOF;)
        text += static_cast<char>(c);
    EXPECT_EQ(tool ? ::pclose(tool) : -1, 0) << arguments;
    return Json::parse(text.empty() ? "[]" : text);
}

} // namespace K7Test
