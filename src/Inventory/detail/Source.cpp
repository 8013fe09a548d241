// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reads the sources of one subject and keeps what could not be had.
#include "Inventory/detail/Source_p.h"
#include "OS/System/Attribute.h"

#include <algorithm>
#include <cerrno>

namespace Kivo::Inventory {

using Attribute = K7SystemUtil::Attribute;

std::optional<std::string> Source::text(const std::string& path, Silent silent)
{
    std::string text;
    if (Attribute::readText(path.c_str(), &text))
        return text;
    noteFailure(silent);
    return std::nullopt;
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

std::optional<std::string> Source::contents(const std::string& path)
{
    std::string bytes;
    if (Attribute::readContents(path.c_str(), &bytes))
        return bytes;
    noteFailure();
    return std::nullopt;
}

std::optional<std::vector<std::string>> Source::names(const std::string& path)
{
    std::vector<std::string> names;
    if (Attribute::listNames(path.c_str(), &names))
        return names;
    noteFailure();
    return std::nullopt;
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
    _problems->push_back({_what, std::move(reason), errorCode, std::move(subject)});
}

} // namespace Kivo::Inventory
