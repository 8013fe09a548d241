// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files, links and directories below the system root.
#include "OS/System/Memory.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include <dirent.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace Kivo {

namespace {

std::string s_systemRoot;
UniqueFd s_systemRootFd; // none when the directory is not there
constinit std::atomic<K7SystemUtil::ReadObserver> s_readObserver{nullptr};

void observe(const char* path, K7SystemUtil::ReadKind kind)
{
    if (const auto observer = s_readObserver.load(std::memory_order_acquire))
        observer(path, kind);
}

/// A rename or a mount anywhere on the machine, while a walk passes "..", makes the kernel give the walk up.
constexpr int OPEN_ATTEMPTS = 128;

UniqueFd openInRoot(const char* path, int flags, mode_t mode)
{
    open_how how{};
    how.flags = static_cast<uint64>(flags);
    how.mode = mode;
    how.resolve = RESOLVE_IN_ROOT;
    const auto open = [&] { return ::syscall(SYS_openat2, s_systemRootFd.get(), path, &how, sizeof how); };
    auto fd = retried(open);
    for (int attempt = 1; attempt < OPEN_ATTEMPTS && fd < 0 && errno == EAGAIN; ++attempt)
        fd = retried(open);
    return UniqueFd(static_cast<int>(fd));
}

} // namespace

bool hasSystemRoot() { return !s_systemRoot.empty(); }

UniqueFd openSystemPath(const char* path, int flags, mode_t mode)
{
    flags |= O_CLOEXEC;
    if ((flags & O_PATH) == 0)
        flags |= O_NONBLOCK | O_NOCTTY;
    if (hasSystemRoot())
        return openInRoot(path, flags, mode);
    return UniqueFd(retried([&] { return ::open(path, flags, mode); }));
}

SystemFile::SystemFile(const char* path)
{
    observe(path, K7SystemUtil::READ_FILE);
    _fd = openSystemPath(path, O_RDONLY);
}

std::string_view SystemFile::readInto(char* buffer, std::size_t size)
{
    errno = 0; // the end of a file leaves it alone
    const auto count = retried([&] { return ::read(_fd.get(), buffer, size); });
    return {buffer, count > 0 ? static_cast<std::size_t>(count) : 0};
}

bool SystemFile::readAll(std::string* text, std::size_t limit)
{
    constexpr std::size_t STEP = 4096;
    text->clear();
    while (text->size() < limit) {
        const std::size_t size = text->size();
        text->resize(std::min(std::max(size * 2, STEP), limit));
        const auto count = retried([&] { return ::read(_fd.get(), text->data() + size, text->size() - size); });
        text->resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count <= 0)
            return count == 0;
    }
    return true;
}

bool SystemLines::nextUnfinished(std::string_view* line)
{
    if (_end - _begin < _size - 1) {
        std::memmove(_buffer, _buffer + _begin, _end - _begin);
        _end -= _begin;
        _begin = 0;
        const std::size_t count = _file.readInto(_buffer + _end, BUFFER_SIZE - _end).size();
        _end += count;
        if (count != 0)
            return next(line);
    }
    *line = {_buffer + _begin, std::min(_end - _begin, _size - 1)};
    _begin += line->size();
    return !line->empty();
}

bool readFirstLine(const char* path, std::size_t size, std::string* line)
{
    SystemFile file(path);
    if (!file)
        return false;
    line->resize(size - 1);
    const std::string_view text = file.readInto(line->data(), line->size());
    if (text.empty())
        return false;
    line->resize(std::min(text.find('\n'), text.size()));
    return true;
}

bool readSystemLink(const char* path, std::string* target)
{
    observe(path, K7SystemUtil::READ_LINK);
    const UniqueFd link = openSystemPath(path, O_PATH | O_NOFOLLOW);
    if (!link)
        return false;
    char buffer[4096];
    const ssize_t length = ::readlinkat(link.get(), "", buffer, sizeof buffer);
    if (length < 0)
        return false;
    target->assign(buffer, static_cast<std::size_t>(length));
    return true;
}

bool listSystemDirectory(const char* path, std::vector<std::string>* names)
{
    observe(path, K7SystemUtil::READ_DIRECTORY);
    UniqueFd fd = openSystemPath(path, O_RDONLY | O_DIRECTORY);
    if (!fd)
        return false;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(fd.get()), ::closedir);
    if (!directory)
        return false;
    static_cast<void>(fd.release());
    names->clear();
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names->emplace_back(name);
    }
    std::sort(names->begin(), names->end());
    return true;
}

namespace {

[[noreturn]] void throwAbout(const wchar_t* format, const char* path)
{
    const int errorCode = errno;
    const J3String name(path);
    J3String message;
    message.format(format, &name);
    noteFailure({message.to_string(), errorCode, path});
    throw message;
}

} // namespace

void throwCantOpen(const char* path) { throwAbout(L"can't open \"%@\"", path); }

void throwCantRead(const char* path) { throwAbout(L"can't read \"%@\"", path); }

void K7SystemUtil::setSystemRoot(const J3String& directory)
{
    s_systemRoot = directory.to_string();
    const auto open = [] { return ::open(s_systemRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); };
    s_systemRootFd = UniqueFd(s_systemRoot.empty() ? -1 : retried(open));
    Memory::forget();
}

J3String K7SystemUtil::systemRoot() { return toWide(s_systemRoot); }

K7SystemUtil::ReadObserver K7SystemUtil::setReadObserver(ReadObserver observer)
{
    return s_readObserver.exchange(observer, std::memory_order_acq_rel);
}

bool K7SystemUtil::readFile(const J3String& path, J3String* text)
{
    return attempt("readFile", [&] {
        require(text, "text is null");
        const std::string name = path.to_string();
        SystemFile file(name);
        if (!file)
            throw Reason{"can't open the file", errno, name};
        std::string contents;
        if (!file.readAll(&contents))
            throw Reason{"can't read the file", errno, name};
        *text = toWide(contents);
    });
}

bool K7SystemUtil::readLink(const J3String& path, J3String* target)
{
    return attempt("readLink", [&] {
        require(target, "target is null");
        const std::string name = path.to_string();
        std::string text;
        if (!readSystemLink(name.c_str(), &text))
            throw Reason{"can't read the link", errno, name};
        *target = toWide(text);
    });
}

bool K7SystemUtil::listDirectory(const J3String& path, std::vector<J3String>* names)
{
    return attempt("listDirectory", [&] {
        require(names, "names is null");
        const std::string name = path.to_string();
        std::vector<std::string> found;
        if (!listSystemDirectory(name.c_str(), &found))
            throw Reason{"can't list the directory", errno, name};
        names->clear();
        for (const std::string& entry : found)
            names->push_back(toWide(entry));
    });
}

} // namespace Kivo
