// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Single facts that the kernel gives as small files and links.
#include "OS/System/Attribute.h"

#include "Base/TextScanner_p.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

namespace Kivo {

namespace {

constexpr std::size_t LONGEST_TEXT = 4096;

std::string contentsOf(const char* path, std::size_t limit)
{
    require(path, "path is null");
    SystemFile file(path);
    file.opened();
    std::string bytes;
    const bool whole = file.readAll(&bytes, limit);
    requireCall(whole, errno == EFBIG ? "the file is too large" : "can't read the file", path);
    return bytes;
}

} // namespace

bool K7SystemUtil::Attribute::readText(const char* path, std::string* text)
{
    return attempt("Attribute::readText", [&] {
        require(text, "text is null");
        *text = trimmed(cutText(contentsOf(path, LONGEST_TEXT + 1), LONGEST_TEXT));
    });
}

bool K7SystemUtil::Attribute::readNumber(const char* path, int64* number, int base)
{
    return attempt("Attribute::readNumber", [&] {
        require(number, "number is null");
        const std::string contents = contentsOf(path, LONGEST_TEXT);
        std::string_view digits = trimmed(contents);
        if (base == 16 && digits.starts_with("0x"))
            digits.remove_prefix(2);
        const auto value = wholeNumber<int64>(digits, base);
        require(value.has_value(), "is not a number", path);
        *number = *value;
    });
}

bool K7SystemUtil::Attribute::readFlag(const char* path, bool* flag)
{
    return attempt("Attribute::readFlag", [&] {
        require(flag, "flag is null");
        const std::string contents = contentsOf(path, LONGEST_TEXT);
        const std::string_view text = trimmed(contents);
        const bool on = text == "1" || text == "Y";
        require(on || text == "0" || text == "N", "is neither 0 nor 1", path);
        *flag = on;
    });
}

bool K7SystemUtil::Attribute::readLinkName(const char* path, std::string* name)
{
    return attempt("Attribute::readLinkName", [&] {
        require(name, "name is null");
        std::string target;
        if (!readLink(path, &target))
            return false;
        *name = target.substr(target.rfind('/') + 1);
        return true;
    });
}

bool K7SystemUtil::Attribute::readLink(const char* path, std::string* target)
{
    return attempt("Attribute::readLink", [&] {
        require(path && target, "invalid input parameters");
        std::string text;
        requireCall(readSystemLink(path, &text), "can't read the link", path);
        *target = std::move(text);
    });
}

bool K7SystemUtil::Attribute::readContents(const char* path, std::string* bytes)
{
    return attempt("Attribute::readContents", [&] {
        require(bytes, "bytes is null");
        *bytes = contentsOf(path, SystemFile::MAX_SIZE);
    });
}

bool K7SystemUtil::Attribute::listNames(const char* path, std::vector<std::string>* names)
{
    return attempt("Attribute::listNames", [&] {
        require(path && names, "invalid input parameters");
        std::vector<std::string> found;
        requireCall(listSystemDirectory(path, &found), "can't list the directory", path);
        *names = std::move(found);
    });
}

} // namespace Kivo
