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
#include <string_view>

namespace Kivo::Inventory {

/// Whether the running machine is read, and not a captured tree: what only a live kernel tells is asked for then alone.
[[nodiscard]] bool isLive();

/// Reads small files for one subject. What is not there is missing without a word; whatever else goes wrong becomes one
/// of the subject's problems.
class Source {
public:
    /// An errno that a file gives where it has nothing to say, as "speed" of a link that is down does.
    using Silent = std::initializer_list<int>;

    /// @param what the subject, as Problem::what names it
    Source(const char* what, std::vector<Problem>* problems) : _what(what), _problems(problems) {}

    /// The longest text that a record keeps, the most records of a subject and the most of its problems: a captured
    /// tree may hold anything.
    static constexpr std::size_t LONGEST_TEXT = 256;
    static constexpr std::size_t MOST_ENTRIES = 16384;
    static constexpr std::size_t MOST_PROBLEMS = 256;
    static constexpr std::size_t MOST_NAMES = 1U << 20U; ///< in all directories together

    /// A text file without the white space at its ends; an empty one is missing, a long one is cut and ends in "...".
    std::optional<std::string> text(const std::string& path, Silent silent = {}, std::size_t longest = LONGEST_TEXT);
    std::optional<int64> number(const std::string& path, int base = 10, Silent silent = {});
    std::optional<bool> flag(const std::string& path, Silent silent = {});
    std::optional<std::string> linkName(const std::string& path);

    /// The target of a link as it stands; a file that is not a link has none.
    std::optional<std::string> link(const std::string& path);
    std::optional<std::string> contents(const std::string& path, Silent silent = {});

    /// The names in a directory, as many as there are records at most.
    std::optional<std::vector<std::string>> names(const std::string& path);

    /// What @p parse makes of a short text file, an optional; contents that it refuses become a problem.
    template <class Parse>
    auto parsed(const std::string& path, Parse&& parse, Silent silent = {})
    {
        constexpr std::size_t LONGEST_FILE = 4096;
        const auto contents = text(path, silent, LONGEST_FILE);
        decltype(parse(std::string_view())) result;
        if (contents)
            result = parse(std::string_view(*contents));
        if (contents && !result)
            note("has unexpected contents", 0, path);
        return result;
    }

    /// Whether a record more may be kept; the first that may not becomes a problem of @p subject.
    [[nodiscard]] bool hasRoomAfter(std::size_t count, const std::string& subject);

    /// Note the library's last failure, unless it is only that something is not there.
    void noteFailure(Silent silent = {});
    void note(std::string reason, int errorCode, std::string subject);

private:
    const char* _what;
    std::size_t _nameCount = 0;
    std::vector<Problem>* _problems;
};

} // namespace Kivo::Inventory
