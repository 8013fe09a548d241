// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reads the sources of one subject and keeps what could not be had.
#include "Inventory/detail/Source_p.h"
#include "OS/System/Attribute.h"

#include <algorithm>
#include <cerrno>

namespace Kivo::Inventory {

using Attribute = K7SystemUtil::Attribute;

bool isLive() { return K7SystemUtil::systemRoot().isEmpty(); }

std::optional<std::string> Source::text(const std::string& path, Silent silent, std::size_t longest)
{
    std::string text;
    if (!Attribute::readText(path.c_str(), &text)) {
        noteFailure(silent);
        return std::nullopt;
    }
    if (text.empty())
        return std::nullopt;
    if (text.size() > longest)
        text.replace(longest - 3, std::string::npos, "...");
    return text;
}

std::optional<int64> Source::number(const std::string& path, int base, Silent silent)
{
    int64 number = 0;
    if (Attribute::readNumber(path.c_str(), &number, base))
        return number;
    noteFailure(silent);
    return std::nullopt;
}

std::optional<bool> Source::flag(const std::string& path, Silent silent)
{
    bool flag = false;
    if (Attribute::readFlag(path.c_str(), &flag))
        return flag;
    noteFailure(silent);
    return std::nullopt;
}

std::optional<std::string> Source::linkName(const std::string& path)
{
    std::string name;
    if (Attribute::readLinkName(path.c_str(), &name))
        return name;
    noteFailure();
    return std::nullopt;
}

std::optional<std::string> Source::link(const std::string& path)
{
    std::string target;
    if (Attribute::readLink(path.c_str(), &target))
        return target;
    noteFailure({EINVAL});
    return std::nullopt;
}

std::optional<std::string> Source::contents(const std::string& path, Silent silent)
{
    std::string bytes;
    if (Attribute::readContents(path.c_str(), &bytes))
        return bytes;
    noteFailure(silent);
    return std::nullopt;
}

std::optional<std::vector<std::string>> Source::names(const std::string& path)
{
    std::vector<std::string> names;
    if (_nameCount > MOST_NAMES) {
        note("has more entries than are listed", 0, path);
        return std::nullopt;
    }
    if (!Attribute::listNames(path.c_str(), &names)) {
        noteFailure();
        return std::nullopt;
    }
    _nameCount += names.size();
    if (names.size() > MOST_ENTRIES && !hasRoomAfter(MOST_ENTRIES, path))
        names.resize(MOST_ENTRIES);
    return names;
}

bool Source::hasRoomAfter(std::size_t count, const std::string& subject)
{
    if (count == MOST_ENTRIES)
        note("has more entries than are listed", 0, subject);
    return count < MOST_ENTRIES;
}

void Source::noteFailure(Silent silent)
{
    const K7SystemUtil::Failure failure = K7SystemUtil::lastFailure();
    const int32 code = failure.errorCode;
    if (failure.operation.isEmpty() || code == ENOENT || code == ENOTDIR ||
        std::find(silent.begin(), silent.end(), code) != silent.end())
        return;
    note(failure.reason.to_string(), code, failure.subject.to_string());
}

void Source::note(std::string reason, int errorCode, std::string subject)
{
    if (_problems->size() == MOST_PROBLEMS)
        _problems->push_back({_what, "more could not be read than is listed", 0, {}});
    if (_problems->size() < MOST_PROBLEMS)
        _problems->push_back({_what, std::move(reason), errorCode, std::move(subject)});
}

} // namespace Kivo::Inventory
