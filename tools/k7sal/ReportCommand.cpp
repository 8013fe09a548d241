// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal report: what the library sees of a machine.
#include "Command.h"
#include "Facts.h"
#include "NetTables.h"
#include "Reading.h"
#include "Terminal.h"

#include <iostream>

namespace K7Tool {

namespace {

void printHeading(const std::string& text) { std::cout << "\n" << styled(Style::HEADING, text) << "\n"; }

void printHost(const Json& host)
{
    Table table({"", ""});
    table.add({"Host", cell(host["name"])});
    table.add({"Kernel", cell(host["kernel_version"])});
    table.add({"Uptime", host["uptime_seconds"].is_null() ? "-" : durationText(host["uptime_seconds"].get<double>())});
    std::cout << table.text("");
}

void printMemory(const Json& memory)
{
    printHeading("Memory");
    const auto kib = [&](const char* key) { return memory[key].get<double>(); };
    const double total = kib("mem_total_kib");
    const double cache = kib("buffers_kib") + kib("cached_kib");
    const double free = kib("mem_free_kib");
    Table table({"", "", "", ""}, {Table::LEFT, Table::LEFT, Table::RIGHT, Table::RIGHT});
    const auto add = [&](const char* name, double part) {
        table.add({name, bar(part, total), sizeText(static_cast<std::uint64_t>(part * 1024)),
                   total > 0 ? std::to_string(static_cast<int>(part * 100 / total)) + " %" : "-"});
    };
    add("used", std::max(total - free - cache, 0.0));
    add("cache", cache);
    add("free", free);
    table.add({"total", "", sizeText(static_cast<std::uint64_t>(total * 1024)), ""});
    std::cout << table.text();
}

void printCpu(const Json& cpu)
{
    printHeading("Processor");
    std::cout << "  cores  " << (cpu["core_count"].is_null() ? "unknown" : cell(cpu["core_count"])) << "\n";
    if (cpu["busiest_interrupts"].empty())
        return;
    Table table({"interrupt", "count", "source"}, {Table::LEFT, Table::RIGHT, Table::LEFT});
    for (const Json& row : cpu["busiest_interrupts"])
        table.add({cell(row["name"]), cell(row["count"]), cell(row["description"])});
    std::cout << table.text();
}

void printTable(const std::string& heading, const Table& table, bool empty)
{
    printHeading(heading);
    std::cout << (empty ? "  none\n" : table.text());
}

void printPci(const Json& functions)
{
    Table table({"address", "id", "class", "driver"});
    for (const Json& function : functions)
        table.add({cell(function["address"]), cell(function["vendor_id"]) + ":" + cell(function["device_id"]),
                   cell(function["class_name"]), cell(function["driver"])});
    printTable("PCI functions", table, functions.empty());
}

void printBlock(const Json& devices)
{
    Table table({"name", "size", "model", ""}, {Table::LEFT, Table::RIGHT});
    for (const Json& device : devices) {
        std::string marks = device["removable"] == true ? "removable" : "";
        if (device["read_only"] == true)
            marks += marks.empty() ? "read-only" : ", read-only";
        table.add(
            {cell(device["name"]), sizeText(device["size_bytes"].get<std::uint64_t>()), cell(device["model"]), marks});
    }
    printTable("Block devices", table, devices.empty());
}

int report(const Session& session)
{
    const Facts facts = collectFacts();
    if (session.json) {
        printJson(facts.document);
    } else {
        printHost(facts.document["host"]);
        printMemory(facts.document["memory"]);
        printCpu(facts.document["cpu"]);
        printPci(facts.document["pci_functions"]);
        printBlock(facts.document["block_devices"]);
        printHeading("Network interfaces");
        std::cout << interfaceTables(facts.document["network_interfaces"], !session.root.empty());
        printHeading("Name servers");
        std::cout << dnsTables(facts.document["dns"]);
    }
    std::cout << std::flush;
    for (const Problem& problem : facts.problems)
        failed(problem.what, problem.reason, problem.errorCode);
    return facts.problems.empty() ? EXIT_DONE : EXIT_NOT;
}

} // namespace

void addReportCommand(CLI::App& app, Session& session)
{
    CLI::App* const command = app.add_subcommand("report", "Print what the library sees of the machine");
    addJsonOption(*command, session);
    command->callback([&session] { session.exitCode = report(session); });
}

} // namespace K7Tool
