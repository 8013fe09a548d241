// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A whole capture with stand-ins in place of what it gives away.
#include "RedactCapture.h"

#include "FileTools.h"
#include "Redact.h"

#include <algorithm>

namespace K7Tool {

namespace fs = std::filesystem;

using namespace Kivo::Inventory;

namespace {

FileForm formOf(Secret secret)
{
    switch (secret) {
    case Secret::SERIAL_NUMBER:
        return FileForm::SERIAL;
    case Secret::HOST_NAME:
        return FileForm::HOST_NAME;
    case Secret::COMMAND_LINE:
        return FileForm::COMMAND_LINE;
    case Secret::NONE:
    case Secret::MAC_ADDRESS:
    case Secret::IP_ADDRESS:
        break;
    }
    return FileForm::TEXT;
}

/// Hand every text of a report to a visitor, with the form that its column says it has.
template <class Visitor>
void visitTexts(Json* json, Secret secret, const std::vector<ColumnInfo>& columns, Visitor& visit)
{
    if (json->is_string()) {
        visit(json, formOf(secret));
    } else if (json->is_array()) {
        for (Json& element : *json)
            visitTexts(&element, secret, columns, visit);
    } else if (json->is_object()) {
        visit.object(*json);
        for (auto& [key, value] : json->items()) {
            const auto column = std::find_if(columns.begin(), columns.end(),
                                             [&, &name = key](const ColumnInfo& info) { return info.key == name; });
            if (column == columns.end())
                visitTexts(&value, Secret::NONE, {}, visit);
            else
                visitTexts(&value, column->secret, column->nested ? column->nested() : std::vector<ColumnInfo>(),
                           visit);
        }
    }
}

template <class Visitor>
void visitReport(Json* report, Visitor visit)
{
    for (auto& [key, value] : report->items()) {
        const Section* const section = findSection(key);
        visitTexts(&value, Secret::NONE, section ? section->columns() : std::vector<ColumnInfo>(), visit);
    }
}

struct Learning {
    Redactor* redactor;

    void operator()(Json* text, FileForm form) const { redactor->learn(text->get_ref<const std::string&>(), form); }

    /// An address and a netmask side by side tell a network.
    void object(const Json& object) const
    {
        std::string texts;
        for (const Json& value : object)
            if (value.is_string() && value.get_ref<const std::string&>().size() <= 15)
                texts += value.get_ref<const std::string&>() + " ";
        redactor->learnNetworks(texts);
    }
};

struct Replacing {
    Redactor* redactor;

    void operator()(Json* text, FileForm form) const
    {
        *text = redactor->redacted(text->get_ref<const std::string&>(), form);
    }
    void object(const Json&) const {}
};

fs::path below(const fs::path& directory, const std::string& path) { return directory / path.substr(1); }

void learnCapture(const fs::path& from, const Manifest& manifest, Json* report, Redactor* redactor)
{
    visitReport(report, Learning{redactor});
    for (const auto& [path, entry] : manifest.entries) {
        redactor->learn(path);
        redactor->keepInPaths(path);
        if (entry.link)
            redactor->learn(*entry.link);
        if (entry.size)
            redactor->learn(contentsOf(below(from, path)), K7Tool::formOf(path));
    }
}

} // namespace

void redactCapture(const fs::path& from, const fs::path& to, Manifest* manifest, Json* report)
{
    Redactor redactor;
    learnCapture(from, *manifest, report, &redactor);
    visitReport(report, Replacing{&redactor});
    Manifest result;
    result.redacted = true;
    result.kernelRelease = redactor.redacted(manifest->kernelRelease);
    for (const auto& [path, entry] : manifest->entries) {
        const std::string name = redactor.redacted(path);
        CapturedEntry& redacted = result.entries[name];
        if (entry.link) {
            redacted.link = redactor.redacted(*entry.link);
            fs::create_directories(below(to, name).parent_path());
            fs::create_symlink(*redacted.link, below(to, name));
        } else if (entry.size) {
            const std::string contents = redactor.redacted(contentsOf(below(from, path)), K7Tool::formOf(path));
            writeFile(below(to, name), contents);
            redacted.setContents(contents);
        } else {
            fs::create_directories(below(to, name));
        }
    }
    for (const std::string& path : manifest->missing)
        result.missing.insert(redactor.redacted(path));
    for (Problem problem : manifest->problems) {
        problem.reason = redactor.redacted(problem.reason);
        problem.subject = redactor.redacted(problem.subject);
        result.problems.push_back(std::move(problem));
    }
    *manifest = std::move(result);
}

} // namespace K7Tool
