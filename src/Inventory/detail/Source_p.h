// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reads the sources of one subject and keeps what could not be had.
#pragma once

#ifndef K7Inventory_BUILD
#error "private to libK7Inventory"
#endif

#include "Inventory/Listing.h"

#include <initializer_list>
#include <optional>
#include <string>

namespace Kivo::Inventory {

/// Reads small files for one subject. What is not there is missing without a word; whatever else goes wrong becomes one
/// of the subject's problems.
class Source {
public:
    /// An errno that a file gives where it has nothing to say, as "speed" of a link that is down does.
    using Silent = std::initializer_list<int>;

    /// @param what the subject, as Problem::what names it
    Source(const char* what, std::vector<Problem>* problems) : _what(what), _problems(problems) {}

    std::optional<std::string> text(const std::string& path, Silent silent = {});
    std::optional<int64> number(const std::string& path, int base = 10, Silent silent = {});
    std::optional<bool> flag(const std::string& path, Silent silent = {});
    std::optional<std::string> linkName(const std::string& path);
    std::optional<std::string> contents(const std::string& path);
    std::optional<std::vector<std::string>> names(const std::string& path);

    /// Note the library's last failure, unless it is only that something is not there.
    void noteFailure(Silent silent = {});
    void note(std::string reason, int errorCode, std::string subject);

private:
    const char* _what;
    std::vector<Problem>* _problems;
};

} // namespace Kivo::Inventory
