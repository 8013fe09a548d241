// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stand-ins for what a captured machine gives away of its owner.
#pragma once

#include "RedactAddress.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

namespace K7Tool {

/// How a captured file writes what is to be replaced.
enum class FileForm {
    TEXT,         ///< addresses as a person writes them, anywhere
    ROUTES,       ///< /proc/net/route: IPv4 addresses as eight hexadecimal digits, last byte first
    IPV6_ENTRIES, ///< /proc/net/if_inet6: 32 digits, an index, the prefix length
    IPV6_ROUTES,  ///< /proc/net/ipv6_route: 32 digits, the prefix length, and so on
    HOST_NAME,    ///< nothing but the host's name
    SERIAL,       ///< nothing but a serial number
    COMMAND_LINE, ///< the kernel's, or a process's with a NUL behind each word
};

/// The form of a captured file, by its path.
[[nodiscard]] FileForm formOf(std::string_view path);

/// Replaces MAC and IP addresses, serial numbers, host names and command lines. The same original has the same stand-in
/// as long as the object lives, of the same kind and form, so that what belonged together still does.
///
/// Everything is learned first, then replaced: how far a network reaches, or that twelve digits in the middle of an
/// interface's name are a MAC address, may only be said in the last file.
class Redactor {
public:
    /// @{ The first look.
    void learn(std::string_view text, FileForm form = FileForm::TEXT);

    /// Learn the networks of addresses and a netmask that stand together.
    void learnNetworks(std::string_view text);

    /// Names that a tree's paths are made of: a host called "kernel" must not rename /proc/sys/kernel.
    void keepInPaths(std::string_view path);
    /// @}

    /// The second look.
    [[nodiscard]] std::string redacted(std::string_view text, FileForm form = FileForm::TEXT);

private:
    using Bytes = std::vector<std::uint8_t>;

    /// One walk for both looks; @p out is null in the first.
    void walkText(std::string_view text, std::string* out);
    void walkRoutes(std::string_view text, std::string* out);
    void walkIpv6(std::string_view text, std::string* out, std::size_t lengthField);
    void walkName(std::string_view text, std::string* out, FileForm form);
    void walkCommand(std::string_view text, std::string* out);

    std::size_t takeMac(std::string_view text, std::string* out);
    std::size_t takeIpv6(std::string_view text, std::string* out);
    std::size_t takeIpv4(std::string_view text, std::string* out);
    std::size_t takeName(std::string_view text, std::string* out);
    void takeWord(std::string_view word, std::string* out);

    std::string serialStandIn(std::string_view serial);
    std::string hostStandIn(std::string_view name);
    void learnName(std::string_view name);

    AddressMap _addresses;
    std::map<std::string, std::string, std::less<>> _standIns;     ///< of names, by their small letters
    std::unordered_map<std::string, std::set<std::string>> _names; ///< what is looked for everywhere, by its beginning
    std::set<std::string, std::less<>> _hosts;
    std::set<std::string, std::less<>> _pathParts;
    std::set<std::string> _usedSerials;
    std::map<std::string, std::size_t, std::less<>> _commandWords;
};

} // namespace K7Tool
