// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files, links and directories below the system root.
#include "Base/HandlerSlot_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <climits>

#include <algorithm>

#include <dirent.h>

namespace Kivo {

namespace {

constinit HandlerSlot<const char*, K7SystemUtil::ReadKind> s_readObserver;

void observe(const char* path, K7SystemUtil::ReadKind kind) { static_cast<void>(s_readObserver.call(path, kind)); }

} // namespace

K7SystemUtil::ReadObserver K7SystemUtil::setReadObserver(ReadObserver observer) { return s_readObserver.set(observer); }

void K7SystemUtil::setReadObserver(ContextReadObserver observer, void* context)
{
    s_readObserver.set(observer, context);
}

SystemFile::SystemFile(std::string path) : _path(std::move(path))
{
    observe(_path.c_str(), K7SystemUtil::READ_FILE);
    _fd = openSystemPath(_path.c_str(), O_RDONLY);
}

const SystemFile& SystemFile::opened() const
{
    const bool odd = !_fd && errno == ENXIO && hasSystemRoot();
    requireCall(static_cast<bool>(_fd), odd ? "is not a regular file" : "can't open the file", _path);
    return *this;
}

std::string_view SystemFile::readInto(char* buffer, std::size_t size)
{
    errno = 0; // the end of a file leaves it alone
    const auto count = retried([&] { return ::read(_fd.get(), buffer, size); });
    return {buffer, count > 0 ? static_cast<std::size_t>(count) : 0};
}

std::string_view SystemFile::readSome(char* buffer, std::size_t size)
{
    const std::string_view text = readInto(buffer, size);
    requireCall(!text.empty() || errno == 0, "can't read the file", _path);
    return text;
}

bool SystemFile::readAll(std::string* text, std::size_t limit)
{
    constexpr std::size_t STEP = 4096;
    text->clear();
    while (text->size() < limit) {
        const std::size_t size = text->size();
        text->resize(std::min(std::max(size * 2, STEP), limit));
        const std::size_t count = readInto(text->data() + size, text->size() - size).size();
        text->resize(size + count);
        if (count == 0)
            return errno == 0;
    }
    char more = 0;
    if (limit < MAX_SIZE || (readInto(&more, 1).empty() && errno == 0))
        return true;
    errno = errno == 0 ? EFBIG : errno;
    return false;
}

std::size_t SystemLines::fill()
{
    const std::size_t count = _file.readInto(_buffer + _end, BUFFER_SIZE - _end).size();
    _end += count;
    _total += count;
    if (_total > SystemFile::MAX_SIZE)
        errno = EFBIG;
    _failed = errno != 0;
    if (_failed)
        noteFailure({errno == EFBIG ? "the file is too large" : "can't read the file", errno, _file.path()});
    return _failed ? 0 : count;
}

bool SystemLines::nextUnfinished(std::string_view* line)
{
    if (_failed)
        return false;
    if (_end - _begin < _size - 1) {
        std::memmove(_buffer, _buffer + _begin, _end - _begin);
        _end -= _begin;
        _begin = 0;
        if (fill() != 0)
            return next(line);
        if (_failed)
            return false;
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
    char buffer[PATH_MAX];
    const ssize_t length = ::readlinkat(link.get(), "", buffer, sizeof buffer);
    if (length < 0) {
        if (errno == ENOENT) // what the kernel says of an open file that is not a link
            errno = EINVAL;
        return false;
    }
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
    std::vector<std::string> found;
    errno = 0; // the end of a directory leaves it alone
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        if (found.size() == MAX_NAMES) {
            errno = EOVERFLOW;
            return false;
        }
        found.emplace_back(name);
        errno = 0;
    }
    if (errno != 0)
        return false;
    std::sort(found.begin(), found.end());
    *names = std::move(found);
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

} // namespace Kivo
