// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Two connected Ethernet devices for a test in the sandbox, and what can be changed around them there.
#pragma once

#include <string>

namespace K7Test {

/// Run the lines of @p commands as ip does. @return whether every one succeeded
bool ip(const std::string& commands);

/// Give interfaces that come from now on no address by themselves: when it appears is not for a test to know.
void withoutLinkLocalAddresses();

/// A veth pair, up at both ends and without addresses, that goes with its owner. Only in the sandbox.
class VethPair {
public:
    VethPair(const std::string& name, const std::string& peer);
    ~VethPair();
    VethPair(const VethPair&) = delete;
    VethPair& operator=(const VethPair&) = delete;

private:
    std::string _name;
};

/// A file that shows other contents for as long as this lives, by a mount over it. Only in the sandbox.
class CoveredFile {
public:
    CoveredFile(const std::string& path, const std::string& contents);
    ~CoveredFile();
    CoveredFile(const CoveredFile&) = delete;
    CoveredFile& operator=(const CoveredFile&) = delete;

private:
    std::string _path;
};

} // namespace K7Test
