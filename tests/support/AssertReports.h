// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is reported through j3assertFunc.
#pragma once

#include "Foundation/J3Assert.h"

#include <string>
#include <vector>

namespace K7Test {

/// Notes "path, function: message" of every report for as long as it lives.
class AssertReports {
public:
    AssertReports()
    {
        using Text = const Kivo::J3String&;
        Kivo::J3AssertFunc::setHandler(
            [](void* self, Text, Text message, Text function, Text path, int) {
                static_cast<AssertReports*>(self)->texts.push_back(
                    (path + L", " + function + L": " + message).to_string());
            },
            this);
    }
    ~AssertReports() { Kivo::J3AssertFunc::setHandler(nullptr); }
    AssertReports(const AssertReports&) = delete;
    AssertReports& operator=(const AssertReports&) = delete;

    std::vector<std::string> texts;
};

} // namespace K7Test
