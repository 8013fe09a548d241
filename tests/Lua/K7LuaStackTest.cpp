// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Typed values, navigation, checks and printing.
#include "Lua/K7LuaStack.h"

#include "support/LuaHost.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Kivo;
using K7Test::LuaHost;

namespace {

/// What a typed read makes of the value of a Lua expression; "-" when it refuses it.
template <class T>
std::string readAs(const std::string& expression)
{
    LuaHost host(("x = " + expression).c_str());
    host.getItem(L"x");
    T value{};
    const bool isRead = host.getValue(&value);
    EXPECT_EQ(host.height(), 0) << expression;
    if (!isRead)
        return "-";
    if constexpr (std::is_same_v<T, J3String>)
        return value.to_string();
    else
        return std::to_string(value);
}

} // namespace

TEST(K7LuaStack, ReadsAndRefusesByType)
{
    EXPECT_EQ(readAs<bool>("true"), "1");
    EXPECT_EQ(readAs<bool>("1"), "-");
    EXPECT_EQ(readAs<int8>("200"), "-56");
    EXPECT_EQ(readAs<uint16>("65537"), "1");
    EXPECT_EQ(readAs<uint32>("-1"), "4294967295");
    EXPECT_EQ(readAs<int32>("'0x10'"), "16");
    EXPECT_EQ(readAs<int32>("'ten'"), "-");
    EXPECT_EQ(readAs<uint64>("2^53"), "9007199254740992");
    EXPECT_EQ(readAs<uint64>("-1"), "0");
    EXPECT_EQ(readAs<int64>("1e300"), std::to_string(std::numeric_limits<int64>::max()));
    EXPECT_EQ(readAs<int64>("0/0"), "0");
    EXPECT_EQ(readAs<float32>("0.5"), std::to_string(0.5F));
    EXPECT_EQ(readAs<float64>("{}"), "-");
    EXPECT_EQ(readAs<J3String>("5"), "5");
    EXPECT_EQ(readAs<J3String>("'\\xeb\\xaa\\xa8'"), "모");
    EXPECT_EQ(readAs<J3String>("'\\xff'"), "\xef\xbf\xbd");
    EXPECT_EQ(readAs<J3String>("false"), "-");
}

TEST(K7LuaStack, WritesEveryTypeSoThatAScriptSeesIt)
{
    LuaHost host(L"");
    host.writeBool(L"b", true);
    host.writeInt8(L"i8", -8);
    host.writeUint32(L"u32", 4294967295U);
    host.writeUint64(L"u64", (1ULL << 53) + 1);
    host.writeFloat32(L"f", 0.25F);
    host.writeString(L"값", L"텍스트");
    host.run(L"t = type(b) .. i8 .. ' ' .. u32 .. ' ' .. f .. ' ' .. _G['값']; exact = u64 == 2^53");
    EXPECT_EQ(host.text(L"t"), "boolean-8 4294967295 0.25 텍스트");
    bool isExact = false;
    EXPECT_TRUE(host.readBool(L"exact", &isExact));
    EXPECT_TRUE(isExact);
    host.writeString(L"cut", std::wstring(L"ab\0c", 4));
    EXPECT_EQ(host.text(L"cut"), "ab");
    host.pushValue(static_cast<const J3String*>(nullptr));
    EXPECT_EQ(lua_type(host.state(), -1), LUA_TNIL);
}

TEST(K7LuaStack, ReachesItemsOfAnyName)
{
    LuaHost host(L"");
    std::vector<J3String> names = {L"a", L"", std::wstring(300, L'n'), L"이름", L"a.b"};
    for (uint32 i = 0; i < 2000; ++i)
        names.push_back(J3String().format(L"n%u", i));
    for (int32 round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < names.size(); ++i)
            host.writeInt32(names[i], static_cast<int32>(i) + round);
        for (std::size_t i = 0; i < names.size(); ++i) {
            int32 value = -1;
            EXPECT_TRUE(host.readInt32(names[i], &value)) << names[i].to_string();
            EXPECT_EQ(value, static_cast<int32>(i) + round) << names[i].to_string();
        }
    }
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaStack, EntersAndLeavesTables)
{
    LuaHost host(L"a = {b = {c = 5}}  n = 3");
    EXPECT_TRUE(host.pathInto(L"a"));
    EXPECT_TRUE(host.pathInto(L"b"));
    EXPECT_FALSE(host.pathInto(L"missing"));
    EXPECT_FALSE(host.isRoot());
    int32 c = 0;
    EXPECT_TRUE(host.readInt32(L"c", &c));
    EXPECT_EQ(c, 5);
    host.addPath(L"new");
    EXPECT_TRUE(host.hasTable(L"new"));
    host.pathOut();
    host.pathOut();
    EXPECT_TRUE(host.isRoot());
    host.addPath(L"a"); // is kept as it is
    host.getItem(L"a");
    EXPECT_TRUE(host.pathInto(L""));
    EXPECT_TRUE(host.hasTable(L"b"));
    EXPECT_EQ(host.depth(), 1U);
    host.pathOut();
    host.getItem(L"n");
    EXPECT_FALSE(host.pathInto(L""));
    EXPECT_EQ(host.height(), 0);
    EXPECT_TRUE(host.hasFunction(L"print"));
}

TEST(K7LuaStack, CountsArrayElementsFromZero)
{
    LuaHost host(L"t = {10, 20}");
    host.getItem(L"t");
    EXPECT_EQ(host.K7LuaStack::getTableLength(), 2U);
    host.getTableItem(0);
    int32 value = 0;
    EXPECT_TRUE(host.getValue(&value));
    EXPECT_EQ(value, 10);
    host.pushValue(&value);
    host.setTableItem(2);
    EXPECT_EQ(host.K7LuaStack::getTableLength(), 3U);
    host.getTableItem(std::numeric_limits<uint32>::max());
    EXPECT_EQ(lua_type(host.state(), -1), LUA_TNIL);
    EXPECT_EQ(host.height(), 2);
}

TEST(K7LuaStack, WithoutAStateOrAValueDoesNothing)
{
    LuaHost none;
    int32 value = 9;
    EXPECT_EQ(none.getItem(L"x"), LUA_TNONE);
    EXPECT_FALSE(none.readInt32(L"x", &value));
    EXPECT_TRUE(none.writeInt32(L"x", 1));
    EXPECT_FALSE(none.pathInto(L"x"));
    EXPECT_EQ(none.getTableLength(L"x"), 0U);
    K7LuaFunction0 function(L"f");
    EXPECT_FALSE(none.callLuaFunction(0, function));
    none.popTop();
    LuaHost empty(L"x = 1");
    EXPECT_FALSE(empty.getValue(&value));
    EXPECT_FALSE(empty.pathInto(L""));
    empty.putItem(L"x");
    empty.setTableItem(0);
    empty.popTop();
    EXPECT_EQ(empty.getItem(L"x"), LUA_TNUMBER);
    EXPECT_FALSE(empty.getValue(static_cast<int32*>(nullptr))) << "popped all the same";
    EXPECT_EQ(empty.height(), 0);
    EXPECT_EQ(value, 9);
}

TEST(K7LuaStack, ChecksThrowPlainTexts)
{
    LuaHost host(L"t = {s = 'x', n = 1, b = true}");
    lua_State* const L = host.state();
    const auto expectThrown = [&](const char* expected, auto&& check) {
        std::string thrown;
        try {
            EXPECT_TRUE(check());
        } catch (const char* message) {
            thrown = message;
        }
        EXPECT_EQ(thrown, expected);
        lua_settop(L, 1);
    };
    host.getItem(L"t");
    expectThrown("", [&] { return checkTable(L); });
    expectThrown("", [&] { return checkString(L, L"s") && lua_gettop(L) == 2; });
    expectThrown("is no string", [&] { return checkString(L, L"b"); });
    expectThrown("is not number", [&] { return checkNumber(L, L"b"); });
    expectThrown("is not bool", [&] { return checkBool(L, L"n"); });
    expectThrown("", [&] { return checkBool(L, L"b"); });
    lua_pushnil(L);
    expectThrown("got Nill access", [&] { return checkNotNil(L); });
    lua_pushnil(L);
    expectThrown("is not table", [&] { return checkTable(L); });
}

TEST(K7LuaStack, GivesTheTraceWithTheStackByTypeToTheSinkAlone)
{
    LuaHost host(L"");
    J3String report(L"kept");
    luaPrintStack(host.state(), &report);
    EXPECT_EQ(report, L"kept") << "the stack is empty";
    lua_pushboolean(host.state(), 1);
    lua_pushnumber(host.state(), 0.5);
    lua_pushstring(host.state(), "a b");
    lua_pushlightuserdata(host.state(), &report);
    host.traceError(host.state());
    host.setTraceSink([&](const J3String& text) { report = text; });
    host.traceError(host.state());
    const std::string rule = std::string(55, '=') + '\n';
    const J3String userdata = J3String().format(L"\t=> 4: (userdata) %p\n", static_cast<void*>(&report));
    EXPECT_EQ(report.to_string(), rule + "                << LUA script debug >>\n" + rule +
                                      "\t=> 1: (boolean) true\n\t=> 2: (number) 0.5\n\t=> 3: (string) 'a b'\n" +
                                      userdata.to_string() + rule);
    host.setTraceSink([](const J3String&) { throw 5; });
    host.traceError(host.state());
    EXPECT_EQ(host.height(), 4);
}
