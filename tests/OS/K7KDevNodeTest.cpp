// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The device number: packing, texts, arithmetic and stored forms.
#include "OS/Kernel/K7KDevNode.h"

#include "support/RecordForms.h"

using namespace Kivo;

TEST(K7KDevNode, PacksAndDropsExcessBits)
{
    EXPECT_EQ(K7KDevNode(8, 17).toUint32(), 8388625U);
    EXPECT_EQ(K7KDevNode(8, 17).toString(), L"8.17");
    const K7KDevNode folded(4096, (1U << 20) + 1);
    EXPECT_EQ(folded.major(), 0U);
    EXPECT_EQ(folded.minor(), 1U);
    K7KDevNode node(3, 5);
    node.setMajor(4095);
    EXPECT_EQ(node.minor(), 5U);
    node.setMinor(1048575);
    EXPECT_EQ(node.toUint32(), UINT32_MAX);
    node.makeInvalid();
    EXPECT_FALSE(node.isValid());
}

TEST(K7KDevNode, SetsOneFieldByItsIndex)
{
    K7KDevNode node(8, 17);
    EXPECT_FALSE(node.setField(1, -1));
    EXPECT_FALSE(node.setField(2, 1));
    EXPECT_FALSE(node.setField(-1, 1));
    EXPECT_EQ(node, K7KDevNode(8, 17));
    EXPECT_TRUE(node.setField(0, 259));
    EXPECT_TRUE(node.setField(1, 3));
    EXPECT_EQ(node, K7KDevNode(259, 3));
}

TEST(K7KDevNode, TakesTextsOfTwoSmallNumbers)
{
    for (const char* text : {"8.17", "8.17\n", ".8..17."}) {
        K7KDevNode node(1, 1);
        EXPECT_TRUE(node.fromString(text)) << text;
        EXPECT_EQ(node, K7KDevNode(8, 17)) << text;
    }
    for (const char* text : {"", "8", "8.17.1", "259.0", "8.256", "8.-1", "8.x", "8. 17", "."}) {
        K7KDevNode node(1, 1);
        EXPECT_FALSE(node.fromString(text)) << text;
        EXPECT_FALSE(node.isValid()) << text;
    }
    EXPECT_FALSE(K7KDevNode(static_cast<const char*>(nullptr)).isValid());
}

/// Every operator takes a node, either kind of text, and a packed value.
TEST(K7KDevNode, TakesFourKindsOfOperands)
{
    const K7KDevNode low(0, 1);
    const J3String text(L"0.1");
    K7KDevNode node(3, 1048575);
    node += 1U;
    EXPECT_EQ(node, K7KDevNode(4, 0)) << "a minor that overflows carries into the major";
    node -= low;
    EXPECT_EQ(node, K7KDevNode(3, 1048575));
    node += text;
    node -= "0.1";
    node &= K7KDevNode::K7_MINOR_MASK;
    EXPECT_EQ(node, 1048575U);
    node = "8.17";
    EXPECT_EQ(node, L"8.17");
    EXPECT_EQ(node, "8.17");
    EXPECT_NE(node, J3String(L"8.18"));
    node = text;
    EXPECT_EQ(node, low);
    node = 0U;
    node -= 1U;
    EXPECT_EQ(node, UINT32_MAX) << "the subtraction wraps";
    EXPECT_LT(K7KDevNode(7, 1048575), "8.0");
    EXPECT_LE(low, text);
    EXPECT_GT(low, 0U);
    EXPECT_GE(low, "no number") << "a refused text is the invalid node";
}

TEST(K7KDevNode, StoresOneNumber) { K7Test::expectForms(K7KDevNode(8, 17), {0, 0x80, 0, 0x11}, R"({"1":8388625})"); }
