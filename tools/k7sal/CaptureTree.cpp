// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The part of a machine's files that the library reads, copied.
#include "CaptureTree.h"

#include "Archive.h"
#include "FileTools.h"

#include "Base/TextScanner_p.h"
#include "OS/System/Attribute.h"

#include <cerrno>
#include <deque>

namespace K7Tool {

namespace fs = std::filesystem;

using Kivo::K7SystemUtil;
using Attribute = Kivo::K7SystemUtil::Attribute;

void CaptureTree::copy(const Reads& reads)
{
    fs::create_directories(_target);
    for (const auto& [kind, path] : reads) {
        if (kind == K7SystemUtil::READ_LINK) {
            const std::size_t slash = path.rfind('/');
            const auto parent = resolve(path.substr(0, slash));
            if (!parent || !addLink(*parent + path.substr(slash)))
                manifest.missing.insert(path);
        } else if (const auto found = resolve(path); !found) {
            manifest.missing.insert(path);
        } else if (kind == K7SystemUtil::READ_FILE) {
            copyFile(*found);
        } else {
            copyNames(*found);
        }
    }
    addMissingNames();
}

/// Follow a path to what it names, and make the links on the way.
std::optional<std::string> CaptureTree::resolve(const std::string& path)
{
    constexpr int MAX_LINKS = 40;
    std::deque<std::string> rest;
    const auto prepend = [&](std::string_view text) {
        std::vector<std::string> parts;
        Kivo::TextScanner scanner(text);
        for (std::string_view part; scanner.field(&part, "/");)
            parts.emplace_back(part);
        rest.insert(rest.begin(), parts.begin(), parts.end());
    };
    prepend(path);
    std::string real;
    for (int links = 0; !rest.empty();) {
        const std::string part = rest.front();
        rest.pop_front();
        if (part == ".")
            continue;
        if (part == "..") {
            real.resize(real.empty() ? 0 : real.rfind('/'));
            continue;
        }
        std::string next = real;
        next.append("/").append(part);
        const auto target = _notLinks.contains(next) ? std::nullopt : addLink(next);
        if (!target) {
            _notLinks.insert(next);
            real = next;
            continue;
        }
        if (++links > MAX_LINKS)
            return std::nullopt;
        if (target->starts_with('/'))
            real.clear();
        prepend(*target);
    }
    return real;
}

/// @return the link's target, nothing when there is no link
std::optional<std::string> CaptureTree::addLink(const std::string& path)
{
    if (const auto known = manifest.entries.find(path); known != manifest.entries.end())
        return known->second.link;
    std::string target;
    if (!Attribute::readLink(path.c_str(), &target))
        return std::nullopt;
    if (reserve(path, target.size())) {
        fs::create_directories(real(path).parent_path());
        fs::create_symlink(target, real(path));
        manifest.entries[path].link = target;
    }
    return target;
}

void CaptureTree::copyFile(const std::string& path)
{
    if (manifest.entries.contains(path))
        return;
    std::string contents;
    if (!Attribute::readContents(path.c_str(), &contents))
        return noteFailure(path);
    if (!reserve(path, contents.size()))
        return;
    writeFile(real(path), contents);
    manifest.entries[path].setContents(contents);
}

void CaptureTree::copyNames(const std::string& path)
{
    std::vector<std::string> names;
    if (!Attribute::listNames(path.c_str(), &names))
        return noteFailure(path);
    fs::create_directories(real(path));
    _names.emplace(path, std::move(names));
}

/// Names that were listed and nothing more are empty files; what cannot be read must not read as empty.
void CaptureTree::addMissingNames()
{
    for (const auto& [directory, names] : _names) {
        for (const std::string& name : names) {
            const std::string path = (directory == "/" ? "" : directory) + "/" + name;
            if (_unreadable.contains(path) || fs::exists(fs::symlink_status(real(path))))
                continue;
            if (!reserve(path, 0))
                return;
            writeFile(real(path), "");
            manifest.entries[path].setContents("");
        }
        if (names.empty())
            manifest.entries.try_emplace(directory);
    }
}

/// Count what is to be copied. @return false when there is no more room
bool CaptureTree::reserve(const std::string& path, std::uint64_t size)
{
    const bool isFull = manifest.entries.size() >= TreeLimits::ENTRIES;
    if (!isFull && size <= TreeLimits::TOTAL_BYTES - _bytes) {
        _bytes += size;
        return true;
    }
    manifest.problems.push_back(
        {"capture", isFull ? "left out after 50,000 entries" : "left out after 256 MiB", EFBIG, path});
    return false;
}

void CaptureTree::noteFailure(const std::string& path)
{
    const K7SystemUtil::Failure failure = K7SystemUtil::lastFailure();
    _unreadable.insert(path);
    if (failure.errorCode == ENOENT || failure.errorCode == ENOTDIR)
        manifest.missing.insert(path);
    else
        manifest.problems.push_back({"capture", failure.reason.to_string(), failure.errorCode, path});
}

} // namespace K7Tool
