// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal capture: copies what the library reads of a machine, for --root elsewhere.
#include "Archive.h"
#include "CaptureTree.h"
#include "CapturedRoot.h"
#include "Command.h"
#include "FileTools.h"
#include "PrivateDirectory.h"
#include "RedactCapture.h"
#include "Text.h"

#include "OS/System/Attribute.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace K7Tool {

namespace fs = std::filesystem;

using Kivo::K7SystemUtil;
using namespace Kivo::Inventory;

namespace {

Reads* s_reads = nullptr;

/// Notes everything that the library opens for as long as it lives.
class Watch {
public:
    explicit Watch(Reads* reads)
    {
        s_reads = reads;
        K7SystemUtil::setReadObserver(
            [](const char* path, K7SystemUtil::ReadKind kind) { s_reads->emplace(kind, path); });
    }
    ~Watch() { K7SystemUtil::setReadObserver(nullptr); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

Sections everySection()
{
    Sections all;
    for (const Section& section : sections())
        all.push_back(&section);
    return all;
}

/// Collect all facts. A live kernel is asked a second time by way of its files: what a call answered was read from
/// none of them, and a captured tree has nothing else.
Document collectWatched(bool live, Reads* reads)
{
    const Watch watch(reads);
    Document document = collectDocument(everySection());
    if (live) {
        K7SystemUtil::setSystemRoot(L"/");
        static_cast<void>(collectDocument(everySection()));
        K7SystemUtil::setSystemRoot(Kivo::J3String());
    }
    return document;
}

/// Say what was not captured, as far as a person reads it.
void warnOf(const Manifest& manifest)
{
    constexpr std::size_t MOST = 10;
    std::size_t count = 0;
    for (const Problem& problem : manifest.problems)
        if (problem.errorCode != EINVAL && ++count <= MOST) // a driver has nothing to say there
            warn("not captured: " + problem.subject + " (" +
                 (problem.errorCode != 0 && problem.errorCode != EFBIG ? std::strerror(problem.errorCode)
                                                                       : problem.reason) +
                 ")");
    if (count > MOST)
        warn("not captured: " + std::to_string(count - MOST) + " more, which the manifest lists");
}

/// Where a capture is to be.
struct Target {
    fs::path path;
    bool isArchive;

    explicit Target(const std::string& name)
        : path((fs::absolute(name) / "").lexically_normal().parent_path()), isArchive(isArchiveName(path.string()))
    {}

    /// @return why nothing can be put there, null when it can
    [[nodiscard]] const char* problem() const
    {
        const fs::file_status status = fs::symlink_status(path);
        if (!fs::exists(status))
            return nullptr;
        if (isArchive)
            return "is there already";
        return fs::is_directory(status) && fs::is_empty(path) ? nullptr : "is not an empty directory";
    }

    /// "recorder" of "recorder.tar.gz"
    [[nodiscard]] std::string stem() const
    {
        return path.filename().string().substr(0, path.filename().string().rfind(".t"));
    }
};

/// Wait until the file system has what was written.
void sync(const fs::path& directory)
{
    const Kivo::UniqueFd fd(
        Kivo::retried([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!fd || ::syncfs(fd.get()) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot write " + directory.string());
}

/// What is copied, and what the machine says of itself.
struct Facts {
    Reads reads;
    Json report;
};

/// Make the capture's parts in @p staging. @return what is to be renamed
fs::path build(const fs::path& staging, const Target& target, bool redact, Facts* facts, Manifest* manifest)
{
    fs::path top = staging / "tree";
    CaptureTree tree(top);
    tree.copy(facts->reads);
    *manifest = std::move(tree.manifest);
    if (!K7SystemUtil::Attribute::readText("/proc/sys/kernel/osrelease", &manifest->kernelRelease))
        manifest->kernelRelease.clear();
    if (redact) {
        redactCapture(top, staging / "redacted", manifest, &facts->report);
        top = staging / "redacted";
    }
    writeFile(top / CAPTURE_DIRECTORY / MANIFEST_FILE, jsonText(toJson(manifestDocument(*manifest))) + "\n");
    writeFile(top / CAPTURE_DIRECTORY / REPORT_FILE, jsonText(facts->report) + "\n");
    if (!target.isArchive) {
        sync(top);
        return top;
    }
    packArchive(top, target.stem(), staging / "archive");
    return staging / "archive";
}

int capture(const Session& session, const std::string& name, bool redact)
{
    const Target target(name);
    try {
        if (const char* const problem = target.problem())
            return failed("capture", name + " " + problem);
        Facts facts; // before there is another process of the tool
        facts.report = toJson(collectWatched(session.isLive(), &facts.reads));
        const PrivateDirectory staging(target.path.parent_path(), ".k7sal-");
        Manifest manifest;
        const fs::path built = build(staging.path(), target, redact, &facts, &manifest);
        std::cout << printable(std::to_string(manifest.entries.size()) + " entries captured to " + name) << "\n";
        if (!(std::cout << std::flush))
            return failed("capture", "standard output cannot be written");
        if (std::rename(built.c_str(), target.path.c_str()) != 0)
            return failed("capture", "cannot make " + name, errno);
        warnOf(manifest);
        return EXIT_DONE;
    } catch (const std::system_error& error) {
        return failed("capture", error.what());
    } catch (const std::runtime_error& error) {
        return failed("capture", error.what());
    }
}

} // namespace

void declareCapture(CLI::App& command, Session& session)
{
    struct Options {
        std::string name;
        bool redact = false;
    };
    const auto options = std::make_shared<Options>();
    command.add_option("name", options->name, "An archive (NAME.tar.gz) or a directory that is empty or not there yet")
        ->required();
    command.add_flag("--redact", options->redact,
                     "Put stand-ins in place of addresses, serial numbers, host names and command lines");
    command.callback([&session, options] { session.exitCode = capture(session, options->name, options->redact); });
}

} // namespace K7Tool
