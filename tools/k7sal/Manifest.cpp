// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a capture holds, and what it could not have.
#include "Manifest.h"

#include "LateLibrary.h"

#include <ctime>
#include <stdexcept>

#include <openssl/evp.h>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

struct CaptureRecord {
    std::string version;
    std::string time;
    std::optional<std::string> kernelRelease;
    bool redacted;
    List missing;
};

constexpr Column<CaptureRecord> CAPTURE_COLUMNS[] = {
    column<&CaptureRecord::version>({"version", "version", "Version of the tool that captured"}),
    column<&CaptureRecord::time>({"time", "time", "When the capture was made, UTC"}),
    column<&CaptureRecord::kernelRelease>({"kernel_release", "kernel", "Release of the captured machine's kernel"}),
    column<&CaptureRecord::redacted>({"redacted", "redacted", "Whether addresses and names are stand-ins"}),
    column<&CaptureRecord::missing>({"missing", "missing", "Paths that were looked for and are not there"}),
};

struct EntryRecord {
    std::string path;
    CapturedEntry entry;
};

constexpr Column<EntryRecord> ENTRY_COLUMNS[] = {
    column<&EntryRecord::path>({"path", "path", "Path on the machine", Unit::NONE, Align::LEFT, IDENTITY}),
    {{"size_bytes", "size", "Size of a file", Unit::BYTES, Align::RIGHT},
     [](const EntryRecord& r) { return Value(r.entry.size); }},
    {{"sha256", "SHA-256", "Digest of a file's contents"}, [](const EntryRecord& r) { return Value(r.entry.sha256); }},
    {{"link", "link", "Target of a symbolic link"}, [](const EntryRecord& r) { return Value(r.entry.link); }},
};

template <class Record, std::size_t Count>
void addRow(Sheet* sheet, const Column<Record> (&columns)[Count], const Record& record)
{
    std::vector<Value> row;
    for (const Column<Record>& column : columns)
        row.push_back(column.read(record));
    sheet->data.rows.push_back(std::move(row));
}

template <class Record, std::size_t Count>
Sheet sheetOf(const char* key, const char* heading, Shape shape, const Column<Record> (&columns)[Count])
{
    Sheet sheet{key, heading, shape, 0, {}, {true, {}, {}}};
    for (const Column<Record>& column : columns)
        sheet.columns.push_back(column.info);
    return sheet;
}

std::string timeNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    char text[sizeof "2026-01-01T00:00:00Z"] = "";
    if (!::gmtime_r(&now, &parts) || std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) == 0)
        return {};
    return text;
}

} // namespace

void CapturedEntry::setContents(std::string_view contents)
{
    static const LateFunction<decltype(::EVP_Digest)> digestOf(K7_LIBCRYPTO, "EVP_Digest");
    static const LateFunction<decltype(::EVP_sha256)> algorithm(K7_LIBCRYPTO, "EVP_sha256");
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    if (digestOf(contents.data(), contents.size(), digest, &length, algorithm(), nullptr) != 1)
        throw std::runtime_error("no SHA-256 digest could be computed");
    size = contents.size();
    sha256.emplace();
    for (unsigned i = 0; i < length; ++i)
        for (const int shift : {4, 0})
            *sha256 += "0123456789abcdef"[digest[i] >> shift & 15];
}

Document manifestDocument(const Manifest& manifest)
{
    Sheet capture = sheetOf("capture", "Capture", Shape::RECORD, CAPTURE_COLUMNS);
    const bool hasRelease = !manifest.kernelRelease.empty();
    addRow(&capture, CAPTURE_COLUMNS,
           {K7SAL_VERSION, timeNow(), hasRelease ? std::optional(manifest.kernelRelease) : std::nullopt,
            manifest.redacted, List(manifest.missing.begin(), manifest.missing.end())});
    capture.data.problems = manifest.problems;
    Sheet entries = sheetOf("entries", "Entries", Shape::LIST, ENTRY_COLUMNS);
    for (const auto& [path, entry] : manifest.entries)
        addRow(&entries, ENTRY_COLUMNS, {path, entry});
    return {std::move(capture), std::move(entries)};
}

} // namespace K7Tool
