// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the video pipeline knows about one frame.
#pragma once

#include "Foundation/J3Spot.h"
#include "Foundation/J3Time.h"

namespace Kivo {

/// The size of a picture in pixels.
struct J3Resolution {
    uint16 width = 0;
    uint16 height = 0;

    friend bool operator==(const J3Resolution&, const J3Resolution&) = default;
};

/// What the video pipeline knows about one frame, without its picture.
class J3Frame {
public:
    /// The camera's channel; -1 when alternativeChannel() counts instead.
    [[nodiscard]] int32 channel() const { return _channel; }

    [[nodiscard]] int32 alternativeChannel() const { return _alternativeChannel; }

    [[nodiscard]] uint8 type() const { return _type; }

    [[nodiscard]] uint8 flag() const { return _flag; }

    [[nodiscard]] const J3Spot& spot() const { return _spot; }

    [[nodiscard]] const J3Time& localTime() const { return _localTime; }

    [[nodiscard]] uint32 dataSize() const { return _dataSize; } ///< bytes

    [[nodiscard]] const J3Resolution& resolution() const { return _resolution; }

    void setChannel(int32 channel) { _channel = channel; }

    void setAlternativeChannel(int32 channel) { _alternativeChannel = channel; }

    void setType(uint8 type) { _type = type; }

    void setFlag(uint8 flag) { _flag = flag; }

    void setSpot(const J3Spot& spot) { _spot = spot; }

    void setLocalTime(const J3Time& time) { _localTime = time; }

    void setDataSize(uint32 bytes) { _dataSize = bytes; }

    void setResolution(const J3Resolution& resolution) { _resolution = resolution; }

private:
    int32 _channel = 0;
    int32 _alternativeChannel = 0;
    uint8 _type = 0;
    uint8 _flag = 0;
    J3Spot _spot;
    J3Time _localTime;
    uint32 _dataSize = 0;
    J3Resolution _resolution;
};

} // namespace Kivo
