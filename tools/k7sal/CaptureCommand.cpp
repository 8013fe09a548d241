// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal capture: copies what the library reads of a machine, for --root elsewhere.
#include "Command.h"
#include "Document.h"

#include "OS/System/K7SystemUtilClass.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace K7Tool {

using Kivo::K7SystemUtil;
namespace fs = std::filesystem;

namespace {

using Reads = std::set<std::pair<K7SystemUtil::ReadKind, std::string>>;

Reads* s_reads = nullptr;

/// Everything that the library opens while it collects the facts.
Reads watchReads()
{
    Reads reads;
    s_reads = &reads;
    K7SystemUtil::setReadObserver([](const char* path, K7SystemUtil::ReadKind kind) { s_reads->emplace(kind, path); });
    static_cast<void>(collectDocument());
    K7SystemUtil::setReadObserver(nullptr);
    return reads;
}

/// Copies from one tree into another, keeping the links that lead to what is copied.
class TreeCopy {
public:
    TreeCopy(fs::path source, fs::path target) : _source(std::move(source)), _target(std::move(target)) {}

    /// Copy what was read under a system path. A path that is not there is left out.
    void copy(K7SystemUtil::ReadKind kind, const std::string& path)
    {
        const fs::path parent = fs::path(path).parent_path();
        if (kind == K7SystemUtil::READ_LINK) {
            if (const auto directory = resolve(parent))
                copyLink(*directory / fs::path(path).filename());
        } else if (const auto real = resolve(path)) {
            if (kind == K7SystemUtil::READ_FILE)
                copyFile(*real, path);
            else
                copyNames(*real);
        }
    }

    [[nodiscard]] std::size_t fileCount() const { return _fileCount; }
    [[nodiscard]] const std::vector<std::string>& unreadable() const { return _unreadable; }

private:
    /// Follow a system path to what it names, inside the source tree, and make the same links in the target.
    std::optional<fs::path> resolve(const fs::path& path)
    {
        constexpr int MAX_LINKS = 40;
        const fs::path relative = path.relative_path();
        std::deque<fs::path> rest(relative.begin(), relative.end());
        fs::path real;
        for (int links = 0; !rest.empty() && links <= MAX_LINKS;) {
            const fs::path part = rest.front();
            rest.pop_front();
            if (part == "..") {
                real = real.parent_path();
                continue;
            }
            if (part == "." || part.empty())
                continue;
            std::error_code missing;
            const fs::path next = real / part;
            const fs::file_status status = fs::symlink_status(_source / next, missing);
            if (!fs::exists(status))
                return std::nullopt;
            if (!fs::is_symlink(status)) {
                real = next;
                continue;
            }
            ++links;
            copyLink(next);
            const fs::path target = fs::read_symlink(_source / next, missing);
            if (missing)
                return std::nullopt;
            if (target.is_absolute())
                real.clear();
            const fs::path inner = target.relative_path();
            rest.insert(rest.begin(), inner.begin(), inner.end());
        }
        return rest.empty() ? std::optional(real) : std::nullopt;
    }

    void copyLink(const fs::path& path)
    {
        std::error_code missing;
        const fs::path target = fs::read_symlink(_source / path, missing);
        if (missing || fs::is_symlink(fs::symlink_status(_target / path)))
            return;
        fs::create_directories((_target / path).parent_path());
        fs::create_symlink(target, _target / path);
    }

    void copyFile(const fs::path& path, const std::string& name)
    {
        const int fd = ::open((_source / path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        std::string contents;
        char buffer[65536];
        ssize_t count = fd < 0 ? -1 : 0;
        while (fd >= 0 && (count = ::read(fd, buffer, sizeof buffer)) > 0)
            contents.append(buffer, static_cast<std::size_t>(count));
        const int error = errno;
        if (fd >= 0)
            ::close(fd);
        if (count < 0) {
            _unreadable.push_back(name + " (" + std::strerror(error) + ")");
            return;
        }
        fs::create_directories((_target / path).parent_path());
        std::ofstream file(_target / path, std::ios::binary | std::ios::trunc);
        file << contents << std::flush;
        if (!file)
            throw std::system_error(errno, std::generic_category(), "cannot write " + (_target / path).string());
        ++_fileCount;
    }

    /// Make the names of a directory: links as they are, directories, and files without contents.
    void copyNames(const fs::path& path)
    {
        fs::create_directories(_target / path);
        std::error_code unreadable;
        for (const fs::directory_entry& entry : fs::directory_iterator(_source / path, unreadable)) {
            const fs::path name = path / entry.path().filename();
            if (entry.is_symlink())
                copyLink(name);
            else if (entry.is_directory())
                fs::create_directories(_target / name);
            else if (!fs::exists(fs::symlink_status(_target / name)))
                std::ofstream(_target / name).flush();
        }
        if (unreadable)
            _unreadable.push_back("/" + path.string() + " (" + unreadable.message() + ")");
    }

    fs::path _source;
    fs::path _target;
    std::size_t _fileCount = 0;
    std::vector<std::string> _unreadable;
};

int capture(const Session& session, const std::string& directory)
{
    const fs::path target = fs::absolute(directory);
    std::error_code problem;
    if (fs::exists(target, problem) && !fs::is_empty(target, problem))
        return failed("capture", directory + " is not an empty directory");
    try {
        fs::create_directories(target);
        TreeCopy tree(session.root.empty() ? fs::path("/") : fs::absolute(session.root), target);
        for (const auto& [kind, path] : watchReads())
            tree.copy(kind, path);
        std::cout << tree.fileCount() << " files captured to " << directory << "\n" << std::flush;
        for (const std::string& name : tree.unreadable())
            std::cerr << "k7sal: not captured: " << name << "\n";
        return EXIT_DONE;
    } catch (const std::system_error& error) {
        return failed("capture", error.what());
    }
}

} // namespace

void declareCapture(CLI::App& command, Session& session)
{
    const auto directory = std::make_shared<std::string>();
    command.add_option("dir", *directory, "A directory that is empty or not there yet")->required();
    command.callback([&session, directory] { session.exitCode = capture(session, *directory); });
}

} // namespace K7Tool
