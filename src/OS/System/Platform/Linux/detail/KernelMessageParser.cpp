// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Messages of the kernel's log.
#include "Base/TextScanner_p.h"
#include "Foundation/J3StringTokenizer.h"
#include "OS/System/Platform/Linux/detail/KernelMessageParser_p.h"

#include <vector>

namespace Kivo {

namespace {

using Tokens = std::vector<std::string>;

constexpr const char* MESSAGE = "unable to enumerate USB device";
constexpr std::size_t DEEPEST_HUB = 7;
constexpr int32 LARGEST_BUS = 999;

Tokens tokensOf(std::string_view text)
{
    J3StringTokenizer tokenizer(J3String::from_string(text), L"-:. \n", false);
    Tokens tokens;
    for (J3String token; tokenizer.getToken(&token);)
        tokens.push_back(token.to_string());
    return tokens;
}

bool isBus(const std::optional<int32>& bus) { return bus && *bus > 0 && *bus <= LARGEST_BUS; }

/// The hub at bus and ports, as the kernel's path to it names them; one at port 0 is the root hub.
std::optional<UsbHub> hubAt(const Tokens& path)
{
    if (path.size() < 2 || path.size() > DEEPEST_HUB)
        return std::nullopt;
    const auto bus = wholeNumber<int32>(path[0]);
    if (!isBus(bus))
        return std::nullopt;
    UsbHub hub{*bus, {}};
    if (path.size() == 2 && path[1] == "0")
        return hub;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const auto number = wholeNumber<uint8>(path[i]);
        if (i != 0 && (!number || *number == 0))
            return std::nullopt;
        hub.name += (i == 0 ? "" : i == 1 ? "-" : ".") + std::to_string(i == 0 ? *bus : *number);
    }
    return hub;
}

/// "hub 1-1.4:1.0": the hub's path, then its configuration and interface.
std::optional<UsbHub> parseOldForm(Tokens words)
{
    constexpr std::size_t INTERFACE_WORDS = 2;
    words.resize(words.size() - std::min(words.size(), INTERFACE_WORDS));
    return hubAt(words);
}

/// "usb usb1-port2", "usb 1-1.4-port3": the hub, then its port.
std::optional<UsbHub> parseNewForm(Tokens words)
{
    if (words.size() < 2 || !words.back().starts_with("port"))
        return std::nullopt;
    words.pop_back();
    if (words.size() != 1 || !words[0].starts_with("usb"))
        return hubAt(words);
    const auto bus = wholeNumber<int32>(std::string_view(words[0]).substr(3));
    return isBus(bus) ? std::optional(UsbHub{*bus, {}}) : std::nullopt;
}

} // namespace

// [ 1234.567890] hub 1-0:1.0: unable to enumerate USB device on port 2
// [ 1234.567890] usb usb1-port2: unable to enumerate USB device
std::optional<UsbHub> parseEnumerationFailure(std::string_view log)
{
    std::optional<UsbHub> last;
    TextScanner lines(log);
    for (std::string_view line; lines.line(&line);) {
        const std::size_t message = line.find(MESSAGE);
        if (message == std::string_view::npos)
            continue;
        const Tokens tokens = tokensOf(line.substr(0, message));
        const auto subject = std::find_if(tokens.begin(), tokens.end(),
                                          [](const auto& token) { return token == "hub" || token == "usb"; });
        if (subject == tokens.end())
            continue;
        const Tokens words(subject + 1, tokens.end());
        if (const auto hub = *subject == "hub" ? parseOldForm(words) : parseNewForm(words))
            last = hub;
    }
    return last;
}

} // namespace Kivo
