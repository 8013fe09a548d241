// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The command line tool on a terminal: windows, colours, views that are redrawn.
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace K7Test;

namespace {

const std::vector<std::string> WATCH = {"watch", "--interval", "0.1", "--count", "2"};

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end = 0; (end = text.find("\r\n", begin)) != std::string::npos; begin = end + 2)
        lines.push_back(text.substr(begin, end - begin));
    return lines;
}

/// A line without the escape sequences in it.
std::string plain(std::string line)
{
    for (std::size_t begin = 0; (begin = line.find('\033')) != std::string::npos;)
        line.erase(begin, line.find_first_of("AJm", begin) - begin + 1);
    return line;
}

} // namespace

TEST(ToolTerminal, KeepsALiveViewInsideTheWindow)
{
    const std::string sent = runOnTerminal(WATCH, {12, 40});
    const std::vector<std::string> lines = linesOf(sent);
    EXPECT_LE(lines.size(), 2U * 11) << "two looks\n" << sent;
    for (const std::string& line : lines)
        EXPECT_LE(plain(line).size(), 40U) << line;
    const std::string up = "\033[" + std::to_string(lines.size() / 2) + "A\033[J";
    EXPECT_NE(sent.find(up), std::string::npos) << "the second look takes the place of the first\n" << sent;
    for (const std::string& line : lines) {
        const bool isStyled = line.find("\033[1m") != std::string::npos || line.find("\033[2m") != std::string::npos;
        EXPECT_EQ(isStyled, line.ends_with("\033[0m")) << line;
    }
}

TEST(ToolTerminal, DrawsNothingOnADumbOne)
{
    const std::string sent = runOnTerminal(WATCH, {12, 40, {"TERM=dumb"}});
    EXPECT_EQ(sent.find('\033'), std::string::npos) << sent;
    EXPECT_EQ(runOnTerminal(WATCH, {12, 40, {}}).find('\033'), std::string::npos) << "one without a name";
}

TEST(ToolTerminal, DrawsColoursWhereTheyAreWanted)
{
    const std::string bold = "\033[1m";
    EXPECT_NE(runOnTerminal({"report", "host"}, {}).find(bold), std::string::npos);
    EXPECT_EQ(runOnTerminal({"report", "host"}, {24, 80, {"TERM=xterm", "NO_COLOR=1"}}).find(bold), std::string::npos);
    EXPECT_EQ(runOnTerminal({"report", "host", "--color=never"}, {}).find(bold), std::string::npos);
    EXPECT_NE(runTool({"--color=always", "report", "host"}).output.find(bold), std::string::npos);
    EXPECT_EQ(runTool({"report", "host"}).output.find(bold), std::string::npos);
}
