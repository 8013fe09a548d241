// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library sees of a machine, as JSON.
#pragma once

#include "Document.h"

#include "Foundation/J3String.h"

#include <vector>

namespace K7Tool {

/// A fact that could not be had.
struct Problem {
    std::string what;
    std::string reason;
    int errorCode;
};

/// Every fact of the report; one that could not be had is null and stands among the problems.
struct Facts {
    Json document;
    std::vector<Problem> problems;
};

Facts collectFacts();

} // namespace K7Tool
