// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the frame statistics keep of one frame.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Frame.h"

namespace Kivo {

/// What the frame statistics keep of one frame. *Threads*: a value, as an int.
class K7SAL_API K7FrameInfo {
public:
    /// No frame: everything is 0, the local time invalid.
    K7FrameInfo() = default;

    /// @param frame     its channel is channelOf(), of which the low 8 bits are kept
    /// @param frameMode the pipeline's number of the stream mode, see convertToFrameInfoMode()
    K7FrameInfo(const J3Frame& frame, int32 frameMode);

    /// Give a frame's channel: channel(), or alternativeChannel() where that is -1.
    [[nodiscard]] static int32 channelOf(const J3Frame& frame);

    /// Turn the pipeline's number of a stream mode into an index.
    /// @param m 1 to 4 and again 5 to 7 are 0 to 3 and 0 to 2; 8 is 3
    /// @return (m - 1) mod 4 with the sign of the dividend, in 8 bits: for 0 and less also numbers beyond 3 (0 gives
    ///     255), which no counter takes
    [[nodiscard]] static uint8 convertToFrameInfoMode(int32 m);

    /// Equal for frames of the same channel and mode: 256 * channel() + mode().
    [[nodiscard]] uint32 key() const { return uint32{_channel} << 8 | _mode; }

    [[nodiscard]] uint8 channel() const { return _channel; }
    [[nodiscard]] uint8 mode() const { return _mode; } ///< the index of the stream mode, 0 to 3
    [[nodiscard]] uint8 type() const { return _type; }
    [[nodiscard]] uint8 flag() const { return _flag; }
    [[nodiscard]] const J3Spot& spot() const { return _spot; }
    [[nodiscard]] const J3Time& localTime() const { return _localTime; }
    [[nodiscard]] uint32 dataSize() const { return _dataSize; } ///< bytes
    [[nodiscard]] uint16 width() const { return _resolution.width; }
    [[nodiscard]] uint16 height() const { return _resolution.height; }

private:
    uint8 _channel = 0;
    uint8 _mode = 0;
    uint8 _type = 0;
    uint8 _flag = 0;
    J3Spot _spot;
    J3Time _localTime;
    uint32 _dataSize = 0;
    J3Resolution _resolution;
};

} // namespace Kivo
