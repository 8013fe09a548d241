// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system root, and the walk that keeps every path inside it.
#include "Foundation/J3Immortal.h"
#include "OS/System/Platform/Linux/detail/SystemPath_p.h"

#include <climits>

#include <atomic>

namespace Kivo {

namespace {

constexpr int MAX_LINKS = 40;
constexpr std::size_t MAX_DEPTH = 256;

struct SystemRoot {
    std::string path;
    UniqueFd directory;
};

J3Immortal<SystemRoot> s_root;
constinit std::atomic<uint32> s_generation{0};

} // namespace

bool hasSystemRoot() { return static_cast<bool>(s_root->directory); }

const std::string& systemRootPath() { return s_root->path; }

uint32 systemRootGeneration() { return s_generation.load(std::memory_order_acquire); }

bool changeSystemRoot(const std::string& directory)
{
    SystemRoot root{directory, UniqueFd()};
    if (!directory.empty()) {
        root.directory = UniqueFd(retried([&] { return ::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
        if (!root.directory)
            return false;
    }
    std::swap(*s_root, root);
    s_generation.fetch_add(1, std::memory_order_acq_rel);
    return true;
}

bool RootWalk::toEnd(bool followsLastLink)
{
    if (_rest.empty()) {
        errno = ENOENT;
        return false;
    }
    while (nextName()) {
        if (_name == "..") {
            if (!_entered.empty())
                _entered.pop_back();
            continue;
        }
        if (_name == ".")
            continue;
        if (!look())
            return false;
        const bool last = atLastName();
        if (S_ISLNK(_mode) && (!last || followsLastLink)) {
            if (!enterLink())
                return false;
            continue;
        }
        if (last)
            return true;
        if (!isDirectory() || _entered.size() == MAX_DEPTH) {
            errno = isDirectory() ? ENAMETOOLONG : ENOTDIR;
            return false;
        }
        _entered.push_back(std::move(_entry));
    }
    _name = ".";
    return look();
}

bool RootWalk::nextName()
{
    const std::size_t begin = std::min(_rest.find_first_not_of('/'), _rest.size());
    const std::size_t end = std::min(_rest.find('/', begin), _rest.size());
    _name = _rest.substr(begin, end - begin);
    _rest.erase(0, end);
    return !_name.empty();
}

bool RootWalk::look()
{
    struct stat status {};
    const auto open = [this] { return ::openat(directory(), name(), O_PATH | O_NOFOLLOW | O_CLOEXEC); };
    _entry = UniqueFd(retried(open));
    if (!_entry || ::fstat(_entry.get(), &status) != 0)
        return false;
    _mode = status.st_mode;
    return true;
}

bool RootWalk::enterLink()
{
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(_entry.get(), "", target, sizeof target);
    if (length <= 0)
        return false;
    if (++_links > MAX_LINKS || length == static_cast<ssize_t>(sizeof target)) {
        errno = _links > MAX_LINKS ? ELOOP : ENAMETOOLONG;
        return false;
    }
    if (target[0] == '/')
        _entered.clear();
    _rest.insert(0, target, static_cast<std::size_t>(length));
    return true;
}

namespace {

UniqueFd openInRoot(const char* path, int flags)
{
    RootWalk walk(s_root->directory.get(), path);
    if (!walk.toEnd((flags & O_NOFOLLOW) == 0))
        return UniqueFd();
    if ((flags & O_PATH) != 0)
        return walk.takeEntry();
    if (!walk.isRegularFile() && !walk.isDirectory()) {
        errno = ENXIO;
        return UniqueFd();
    }
    return UniqueFd(retried([&] { return ::openat(walk.directory(), walk.name(), flags | O_NOFOLLOW); }));
}

} // namespace

UniqueFd openSystemPath(const char* path, int flags)
{
    flags |= O_CLOEXEC;
    if ((flags & O_PATH) == 0)
        flags |= O_NONBLOCK | O_NOCTTY;
    if (hasSystemRoot())
        return openInRoot(path, flags);
    return UniqueFd(retried([&] { return ::open(path, flags); }));
}

} // namespace Kivo
