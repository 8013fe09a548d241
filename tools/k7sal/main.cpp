// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal: the library from the command line, on a board or on a tree captured from one.
#include "CapturedRoot.h"
#include "Command.h"
#include "CommandRunner.h"
#include "ManPage.h"
#include "Terminal.h"
#include "Text.h"

#include "OS/System/K7SystemUtilClass.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace K7Tool {

namespace {

/// Put something at the place of a closed standard stream, so that no file or socket of a command gets its number;
/// reading or writing it fails as it would have failed.
void holdStandardStreams()
{
    constexpr int MODES[] = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (::fcntl(fd, F_GETFD) < 0 && errno == EBADF)
            static_cast<void>(::open("/dev/null", MODES[fd]));
}

void declareGlobalOptions(CLI::App& app, Session& session)
{
    app.set_version_flag("--version", K7SAL_VERSION);
    app.add_option("--root", session.root, "Read this captured tree, or the archive of one, instead of this machine")
        ->type_name("DIR|ARCHIVE")
        ->check(CLI::ExistingPath)
        ->each([&](const std::string& name) { session.captured = std::make_shared<CapturedRoot>(name); });
    app.add_flag("--json", session.json, "Print one JSON document instead of text");
    app.add_option_function<std::string>(
           "--color",
           [](const std::string& when) {
               setColour(when == "always" ? Colour::ALWAYS : when == "never" ? Colour::NEVER : Colour::AUTO);
           },
           "Draw colours: auto (on a terminal, unless NO_COLOR is set), always, never")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
}

/// Whether the command line has a word, as a command or as anything else.
bool hasWord(int argc, char** argv, const char* word)
{
    return std::any_of(argv + 1, argv + argc, [&](const char* argument) { return std::strcmp(argument, word) == 0; });
}

/// Declare every command, and in full the ones that are needed: to declare them takes longer than most of them run.
void declareCommands(CLI::App& app, Session& session, int argc, char** argv)
{
    const bool all = hasWord(argc, argv, MAN_OPTION);
    for (const Command& command : commands()) {
        CLI::App* const declared = app.add_subcommand(command.name, command.help);
        if (all || hasWord(argc, argv, command.name))
            command.declare(*declared, session);
    }
}

/// What a wrong command line is answered with.
std::string usageMessage(const CLI::App& app, const CLI::Error& error)
{
    std::string name = app.get_name();
    const CLI::App* deepest = &app;
    while (!deepest->get_subcommands().empty()) {
        deepest = deepest->get_subcommands().front();
        name += " " + deepest->get_name();
    }
    std::string reason = error.what();
    const std::vector<std::string> rest = app.remaining(true);
    const bool lacksCommand = deepest->get_require_subcommand_min() > 0 || deepest == &app;
    if (lacksCommand && !rest.empty() && !rest.front().empty())
        reason = (rest.front()[0] == '-' ? "unknown option '" : "unknown command '") + rest.front() + "'";
    return printable("k7sal: " + reason) + "\nTry '" + name + " --help' for more information.\n";
}

int run(int argc, char** argv)
{
    Session session;
    CLI::App app("System facts and network tests of a recorder board, live or from a captured tree.", "k7sal");
    app.require_subcommand(1);
    app.fallthrough();
    app.failure_message([](const CLI::App* failing, const CLI::Error& error) { return usageMessage(*failing, error); });
    app.footer("Exit codes: 0: done, or the answer is yes; 1: failed, or the answer is no; 2: wrong usage");
    declareGlobalOptions(app, session);
    declareManOption(app);
    declareCommands(app, session, argc, argv);
    installCommandRunner();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        session.exitCode = app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    if (!(std::cout << std::flush))
        return failed("output", "standard output cannot be written");
    return session.exitCode;
}

/// Say the last word where no memory may be left to say it with.
int endedBy(const char* reason)
{
    for (const char* const text : {"k7sal: ", reason, "\n"})
        if (::write(STDERR_FILENO, text, std::strlen(text)) < 0)
            break;
    return EXIT_FAILED;
}

/// What nothing catches, before main and on any thread, ends the tool by the same words.
[[noreturn]] void endByTerminate()
{
    try {
        if (const std::exception_ptr thrown = std::current_exception())
            std::rethrow_exception(thrown);
        endedBy("unexpected end");
    } catch (const std::bad_alloc&) {
        endedBy("out of memory");
    } catch (...) {
        endedBy("unexpected failure");
    }
    ::_exit(EXIT_FAILED);
}

/// Earlier than any static object that allocates, as the command line's parser has some.
[[gnu::constructor(101)]] void setTerminate() { std::set_terminate(endByTerminate); }

} // namespace

} // namespace K7Tool

int main(int argc, char** argv)
{
    using namespace K7Tool;
    holdStandardStreams();
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        return endedBy("out of memory");
    } catch (const std::exception& error) {
        return endedBy(error.what());
    } catch (...) {
        return endedBy("unexpected failure");
    }
}
