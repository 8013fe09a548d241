// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trees of system files for the library to read instead of the machine's.
#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <ostream>

#include <stdlib.h>

namespace K7Test {

using Kivo::K7SystemUtil;
namespace fs = std::filesystem;

FixtureRoot::FixtureRoot(const std::string& machine)
{
    K7SystemUtil::setSystemRoot((fs::path(K7_FIXTURES) / machine).c_str());
}

FixtureRoot::~FixtureRoot() { K7SystemUtil::setSystemRoot(L""); }

TemporaryTree::TemporaryTree(bool isSystemRoot) : _isSystemRoot(isSystemRoot)
{
    std::string pattern = (fs::temp_directory_path() / "k7-tree-XXXXXX").string();
    EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
    _top = pattern;
    if (_isSystemRoot)
        K7SystemUtil::setSystemRoot(_top.c_str());
}

TemporaryTree::~TemporaryTree()
{
    if (_isSystemRoot)
        K7SystemUtil::setSystemRoot(L"");
    std::error_code ignored;
    fs::remove_all(_top, ignored);
}

fs::path TemporaryTree::real(const std::string& path) const { return _top / fs::path(path).relative_path(); }

TemporaryTree& TemporaryTree::file(const std::string& path, std::string_view contents)
{
    fs::create_directories(real(path).parent_path());
    std::ofstream(real(path), std::ios::binary).write(contents.data(), static_cast<std::streamsize>(contents.size()));
    return *this;
}

TemporaryTree& TemporaryTree::link(const std::string& path, const std::string& target)
{
    fs::create_directories(real(path).parent_path());
    fs::create_symlink(target, real(path));
    return *this;
}

TemporaryTree& TemporaryTree::directory(const std::string& path)
{
    fs::create_directories(real(path));
    return *this;
}

std::string TemporaryTree::contents(const std::string& path) const
{
    std::ifstream file(real(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::size_t openDescriptors()
{
    const fs::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace K7Test

namespace Kivo {

void PrintTo(const J3String& text, std::ostream* out) { *out << '"' << text.to_string() << '"'; }

} // namespace Kivo
