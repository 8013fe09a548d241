// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Prints an interface's address, mask and traffic: interface_address [NAME], lo by default.
#include "Core/K7IPv4Address.h"
#include "OS/System/K7SystemUtil.h"

#include <iostream>

using Kivo::K7SystemUtil;
using Network = K7SystemUtil::Network;

int main(int argc, char** argv)
{
    const char* const name = argc > 1 ? argv[1] : "lo";
    Kivo::K7IPv4Address address;
    if (!Network::getIpAddress(name, &address)) {
        std::cerr << name << " has no IPv4 address\n";
        return 1;
    }
    const Kivo::K7IPv4Address mask = Network::getSubnetMask(name);
    std::cout << name << " " << address.toString().to_string() << " mask " << mask.toString().to_string() << "\n";
    Network::NetDevIoStat stat{};
    if (Network::getNetDevIoStat(name, &stat))
        std::cout << stat.rx.bytes << " bytes received, " << stat.tx.bytes << " sent\n";
}
