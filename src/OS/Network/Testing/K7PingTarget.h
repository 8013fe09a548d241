// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test pings.
#pragma once

#include "K7SALApi.h"

#include "Core/K7InetAddress.h"

namespace Kivo {

/// One target of a network quality test: the caller's channel number and the address to ping.
/// *Threads*: a value, as an int.
class K7SAL_API K7PingTarget : public J3Record<K7PingTarget> {
public:
    [[nodiscard]] K7PingTarget* clone() const override;

    /// "channel,address"
    [[nodiscard]] J3String toString() const override;

    /// The channel number, -1 for none.
    [[nodiscard]] int32 channel() const { return _channel; }

    void setChannel(int32 channel) { _channel = channel; }

    [[nodiscard]] const K7InetAddress& address() const { return _address; }

    void setAddress(const K7InetAddress& address) { _address = address; }

    void copyFrom(const K7PingTarget& other) { *this = other; }

    /// Become no channel and no address.
    void makeInvalid() { *this = K7PingTarget(); }

    static auto fields(auto& self) { return std::tie(self._channel, self._address); }

private:
    int32 _channel = -1;
    K7InetAddress _address;
};

} // namespace Kivo
