// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system root, and texts, links and directories below it.
#include "OS/System/Attribute.h"
#include "OS/System/K7SystemUtilClass.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemPath_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

namespace Kivo {

bool K7SystemUtil::setSystemRoot(const J3String& directory)
{
    return attempt("setSystemRoot", [&] {
        const std::string path = directory.to_string();
        requireCall(changeSystemRoot(path), "can't open the directory", path);
    });
}

J3String K7SystemUtil::systemRoot() { return toWide(systemRootPath()); }

bool K7SystemUtil::readFile(const J3String& path, J3String* text)
{
    return attempt("readFile", [&] {
        require(text, "text is null");
        std::string contents;
        if (!Attribute::readContents(path.to_string().c_str(), &contents))
            return false;
        *text = toWide(contents);
        return true;
    });
}

bool K7SystemUtil::readLink(const J3String& path, J3String* target)
{
    return attempt("readLink", [&] {
        require(target, "target is null");
        std::string text;
        if (!Attribute::readLink(path.to_string().c_str(), &text))
            return false;
        *target = toWide(text);
        return true;
    });
}

bool K7SystemUtil::listDirectory(const J3String& path, std::vector<J3String>* names)
{
    return attempt("listDirectory", [&] {
        require(names, "names is null");
        std::vector<std::string> found;
        if (!Attribute::listNames(path.to_string().c_str(), &found))
            return false;
        std::vector<J3String> wide;
        wide.reserve(found.size());
        for (const std::string& name : found)
            wide.push_back(toWide(name));
        *names = std::move(wide);
        return true;
    });
}

} // namespace Kivo
