// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal lua: runs a script that can ask what the tool can show.
#include "Command.h"
#include "LuaMethods.h"
#include "Text.h"

#include <cstdio>
#include <iostream>

namespace K7Tool {

using namespace Kivo;

namespace {

/// The report of an error, line for line, with what is not printable made so.
void showReport(const J3String& report)
{
    std::cout << std::flush;
    const std::string text = report.to_string();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const bool isIndented = text[begin] == '\t';
        std::cerr << (isIndented ? "\t" : "") << printable(text.substr(begin + isIndented, end - begin - isIndented))
                  << "\n";
        begin = end + 1;
    }
}

int runLua(const std::string& script, const std::vector<std::string>& arguments)
{
    K7LuaState state;
    state.setTraceSink(showReport);
    if (!state.init(J3String(script.c_str())))
        return failed("lua", "the script cannot be loaded", 0, script);
    bindSal(state);
    std::vector<J3String> words;
    words.reserve(arguments.size());
    for (const std::string& argument : arguments)
        words.push_back(J3String::from_string(argument));
    state.writeObjects(L"arg", words);
    try {
        state.runScript();
    } catch (const J3Exception& error) {
        return failed("lua", error.what(), 0, script);
    }
    bool answer = true;
    state.getValue(&answer);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) // what scripts print with
        return failed("lua", "standard output cannot be written");
    return answer ? EXIT_DONE : EXIT_FAILED;
}

} // namespace

void declareLua(CLI::App& command, Session& session)
{
    const auto words = std::make_shared<std::vector<std::string>>();
    command.positionals_at_end();
    command.prefix_command();
    command.footer("The class sal reads the machine: sal.memory(), sal.network_interfaces() and so on for the names "
                   "that sal.sections() lists, with the keys of \"report -o help\"; sal.attribute(path), "
                   "sal.memory_counter(name), sal.interrupt_count(name), sal.resolve(host), sal.connects(interface, "
                   "host, port), sal.ping{interface = ..., targets = {...}, rounds = 5, on_result = f}. The arguments "
                   "are in the table arg. A script that returns false ends with the exit code 1.");
    command.add_option("script", *words, "The script, and then its arguments")
        ->required()
        ->type_name("SCRIPT [ARG...]");
    command.callback([&session, &command, words] {
        std::vector<std::string> arguments(words->begin() + 1, words->end());
        for (const std::string& word : command.remaining())
            arguments.push_back(word);
        session.exitCode = runLua(words->front(), arguments);
    });
}

} // namespace K7Tool
