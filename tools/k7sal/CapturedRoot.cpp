// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A captured machine, read in place of this one.
#include "CapturedRoot.h"

#include "Archive.h"
#include "Replay.h"
#include "Text.h"

#include "OS/System/Attribute.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace K7Tool {

namespace fs = std::filesystem;

using Kivo::K7SystemUtil;

namespace {

/// The tree's top: an archive often has everything below one directory.
fs::path topOf(const fs::path& directory)
{
    const auto isThere = [&](const char* name) { return fs::exists(fs::symlink_status(directory / name)); };
    if (isThere("proc") || isThere("sys"))
        return directory;
    fs::path only;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (!only.empty() || entry.is_symlink() || !entry.is_directory())
            return directory;
        only = entry.path();
    }
    return only.empty() ? directory : only;
}

/// The captured report, read as everything of the tree is; null when there is none.
Json readReport()
{
    const std::string path = std::string("/") + CAPTURE_DIRECTORY + "/" + REPORT_FILE;
    std::string text;
    if (K7SystemUtil::Attribute::readContents(path.c_str(), &text))
        return parseBounded(text);
    if (const int error = K7SystemUtil::lastFailure().errorCode; error != ENOENT && error != ENOTDIR)
        throw std::system_error(error, std::generic_category(), "cannot read " + path);
    return nullptr;
}

void readThisMachine()
{
    setCapturedReport(nullptr);
    K7SystemUtil::setSystemRoot(Kivo::J3String());
}

} // namespace

CapturedRoot::CapturedRoot(const std::string& name)
{
    try {
        fs::path top = name;
        if (!fs::is_directory(top)) {
            _unpacked = std::make_unique<PrivateDirectory>(fs::temp_directory_path(), "k7sal-");
            unpackArchive(name, _unpacked->path());
            top = topOf(_unpacked->path());
        }
        if (!K7SystemUtil::setSystemRoot(top.c_str()))
            throw std::system_error(K7SystemUtil::lastFailure().errorCode, std::generic_category(), "cannot be opened");
        setCapturedReport(readReport());
    } catch (const std::exception& error) {
        readThisMachine();
        throw std::runtime_error(printable(name + ": " + error.what()));
    }
}

CapturedRoot::~CapturedRoot() { readThisMachine(); }

} // namespace K7Tool
