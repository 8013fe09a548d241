// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the frame statistics keep of one frame.
#include "VideoClient/K7FrameInfo.h"

namespace Kivo {

K7FrameInfo::K7FrameInfo(const J3Frame& frame, int32 frameMode)
    : _channel(static_cast<uint8>(channelOf(frame))), _mode(convertToFrameInfoMode(frameMode)), _type(frame.type()),
      _flag(frame.flag()), _spot(frame.spot()), _localTime(frame.localTime()), _dataSize(frame.dataSize()),
      _resolution(frame.resolution())
{}

int32 K7FrameInfo::channelOf(const J3Frame& frame)
{
    return frame.channel() == -1 ? frame.alternativeChannel() : frame.channel();
}

uint8 K7FrameInfo::convertToFrameInfoMode(int32 m) { return static_cast<uint8>(m == 8 ? 3 : (int64{m} - 1) % 4); }

} // namespace Kivo
