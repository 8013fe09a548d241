// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal net: network interfaces, once or again and again.
#include "Command.h"
#include "Show.h"
#include "Watch.h"

#include "Inventory/NetworkInterface.h"

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

struct NetOptions {
    std::string interface;
    bool watches = false;
    WatchOptions watch;
    ColumnOption columns;
};

const Section& interfaces() { return *findSection(SectionKey::NETWORK_INTERFACES); }

Sheet collectInterfaces(const std::string& name)
{
    return name.empty() ? collectSheet(interfaces()) : sheetOf(interfaces(), collected(readNetworkInterface(name)));
}

int net(const Session& session, const NetOptions& options)
{
    if (options.columns.asksForHelp())
        return showColumns({&interfaces()});
    Sheet sheet = collectInterfaces(options.interface);
    if (!options.interface.empty() && sheet.data.known && sheet.data.rows.empty())
        return failed("net", "there is no interface \"" + options.interface + "\"");
    if (options.watches)
        return watch(session, options.watch, [&] { return Document{collectInterfaces(options.interface)}; });
    options.columns.applyTo(sheet);
    const Detail detail = options.interface.empty() ? options.columns.detail() : Detail::ONE_RECORD;
    return showDocument(session, {std::move(sheet)}, detail);
}

} // namespace

void declareNet(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<NetOptions>();
    command.add_option("interface", options->interface, "Show this one in full");
    CLI::Option* const watching =
        command.add_flag("--watch", options->watches, "Show traffic per second, look after look");
    options->watch.declare(command, watching);
    options->columns.declare(command);
    command.callback([&session, options] { session.exitCode = net(session, *options); });
}

} // namespace K7Tool
