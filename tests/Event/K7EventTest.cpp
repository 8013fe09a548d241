// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The event of a sensor, and what it shares.
#include "Event/K7Event.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(K7Event, IsNoneWithTypeZero)
{
    EXPECT_EQ(K7Event(5).toString(), L"{ type: 5, channel: 65535 }");
    EXPECT_TRUE(K7Event(-1).hasEvent());
    K7Event event(0, 3);
    EXPECT_FALSE(event.hasEvent());
    EXPECT_FALSE(event.statusChanged());
    event.setSensorStatusChanged();
    EXPECT_TRUE(K7Event(event).statusChanged());
}

TEST(K7Event, KeepsWhatItSharesInStep)
{
    const auto extra = std::make_shared<J3Event>(1, 2U, uint8{3}, uint16{4});
    EXPECT_EQ(K7Event(9, extra).channel(), K7Event::NO_CHANNEL);
    EXPECT_EQ(extra->type(), 1) << "without a channel of its own an event leaves what it shares alone";

    K7Event event(5, 6, extra);
    EXPECT_EQ(extra->toString(), L"{ type: 5, channel: 6, level: 3, value: 4 }");
    K7Event copy(event);
    copy.setChannel(7);
    copy.setType(8);
    EXPECT_EQ(extra->toString(), L"{ type: 8, channel: 7, level: 3, value: 4 }");
    EXPECT_EQ(event.channel(), 6U) << "a copy shares the extra, not the numbers";
}

TEST(K7Event, MakesOneOnlyWhenItSharesNone)
{
    const auto extra = std::make_shared<J3Event>();
    EXPECT_EQ(K7Event(1, 2, extra).makeJ3Event(), extra);
    const K7Event plain(1, 2);
    const auto first = plain.makeJ3Event();
    EXPECT_EQ(first->toString(), L"{ type: 1, channel: 2, level: 0, value: 65535 }");
    EXPECT_NE(first, plain.makeJ3Event());
}
