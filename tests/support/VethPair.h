// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Two connected Ethernet devices for a test in the sandbox, and what can be set on a device there.
#pragma once

#include <string>

namespace K7Test {

/// A veth pair, up at both ends, that goes with its owner. Only in the sandbox.
class VethPair {
public:
    VethPair(const std::string& name, const std::string& peer);
    ~VethPair();
    VethPair(const VethPair&) = delete;
    VethPair& operator=(const VethPair&) = delete;

    /// The kernel's refusal, an errno; 0 when the pair is there.
    [[nodiscard]] int problem() const { return _problem; }

private:
    std::string _name;
    int _problem;
};

// Each sets one thing through rtnetlink and gives 0 or an errno. Addresses and gateways are IPv4 or IPv6 texts.
int setDeviceUp(const std::string& name, bool up);
int addAddress(const std::string& name, const std::string& address, unsigned char prefixLength);
int removeAddress(const std::string& name, const std::string& address, unsigned char prefixLength);
int addDefaultRoute(const std::string& name, const std::string& gateway);

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
