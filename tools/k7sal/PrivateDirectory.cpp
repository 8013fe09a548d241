// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A directory for files on their way, which never stays behind.
#include "PrivateDirectory.h"

#include <csignal>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>

namespace K7Tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void removeAtEndOf(int lifeline, const fs::path& directory)
{
    ::setsid(); // Ctrl-C is for the tool
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE})
        std::signal(signal, SIG_IGN);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fd != lifeline)
            ::close(fd); // whoever reads the tool's output waits for its end, not for this process
    char nothing = 0;
    static_cast<void>(Kivo::retried([&] { return ::read(lifeline, &nothing, 1); }));
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    ::_exit(0);
}

} // namespace

PrivateDirectory::PrivateDirectory(const fs::path& parent, const std::string& prefix)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    const Kivo::UniqueFd waiting(ends[0]);
    _lifeline = Kivo::UniqueFd(ends[1]);
    std::string name = (parent / (prefix + "XXXXXX")).string();
    if (!::mkdtemp(name.data()))
        throw std::system_error(errno, std::generic_category(), "cannot make a directory in " + parent.string());
    _path = name;
    _keeper = ::fork();
    if (_keeper == 0) {
        _lifeline = Kivo::UniqueFd(); // swaps: the temporary closes it
        removeAtEndOf(waiting.get(), _path);
    }
}

PrivateDirectory::~PrivateDirectory()
{
    _lifeline = Kivo::UniqueFd();
    if (_keeper > 0)
        static_cast<void>(Kivo::retried([&] { return ::waitpid(_keeper, nullptr, 0); }));
    std::error_code ignored;
    fs::remove_all(_path, ignored); // where no process could be had, or it did not succeed
}

} // namespace K7Tool
