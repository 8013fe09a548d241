// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reading single facts below the system root, and interrupting a command.
#include "Reading.h"

#include "OS/System/K7SystemUtilClass.h"

#include <algorithm>
#include <charconv>
#include <thread>

#include <signal.h>

namespace K7Tool {

using namespace Kivo;

namespace {} // namespace

Json attribute(const std::string& path)
{
    J3String text;
    if (!K7SystemUtil::readFile(path.c_str(), &text))
        return nullptr;
    return text.trimLeft().trimRight().to_string();
}

Json number(const std::string& path)
{
    const Json text = attribute(path);
    if (text.is_null())
        return nullptr;
    const auto& digits = text.get_ref<const std::string&>();
    int64 value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        return nullptr;
    return value;
}

Json linkName(const std::string& path)
{
    J3String target;
    if (!K7SystemUtil::readLink(path.c_str(), &target))
        return nullptr;
    const std::string text = target.to_string();
    return text.substr(text.rfind('/') + 1);
}

std::vector<std::string> namesIn(const std::string& directory)
{
    std::vector<J3String> found;
    std::vector<std::string> result;
    K7SystemUtil::listDirectory(directory.c_str(), &found);
    result.reserve(found.size());
    for (const J3String& name : found)
        result.push_back(name.to_string());
    return result;
}

std::string cell(const Json& fact)
{
    if (fact.is_null())
        return "-";
    return fact.is_string() ? fact.get<std::string>() : fact.dump();
}

} // namespace K7Tool
