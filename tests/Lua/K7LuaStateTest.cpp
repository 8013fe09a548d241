// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Loading, running, calling; objects and arrays.
#include "Lua/K7LuaState.h"

#include "support/LuaHost.h"

#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <new>

using namespace Kivo;
using K7Test::LuaHost;
using K7Test::Nested;

namespace {

thread_local std::size_t allocations = 0;

} // namespace

/// Counted, to see that a path allocates nothing.
/// @{
[[gnu::noinline]] void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
/// @}

TEST(K7LuaState, LoadsFromFileStreamAndText)
{
    const std::string path = testing::TempDir() + "k7lua_script.lua";
    std::ofstream(path) << "x = 1";
    K7LuaState file;
    EXPECT_TRUE(file.init(J3String(path.c_str())));
    EXPECT_FALSE(file.hasFunction(L"x"));
    EXPECT_TRUE(file.runScript());
    int32 x = 0;
    EXPECT_TRUE(file.readInt32(L"x", &x));
    std::remove(path.c_str());
    EXPECT_FALSE(K7LuaState().init(J3String(path.c_str())));
    K7LuaState stream;
    EXPECT_TRUE(stream.init(J3MemoryStream("x = 2", 5)));
    EXPECT_TRUE(stream.runScript());
    EXPECT_FALSE(K7LuaState().init(J3MemoryStream()));
    K7LuaState empty;
    EXPECT_FALSE(empty.initWithBuffer(L""));
    EXPECT_TRUE(empty.isValid());
    EXPECT_FALSE(K7LuaState().initWithBuffer(L"x ="));
    EXPECT_FALSE(K7LuaState().init(K7LuaResource{L"script", L"module"}));
}

TEST(K7LuaState, ThrowsForAScriptThatFails)
{
    LuaHost host(L"");
    EXPECT_NE(host.errorOf(L"error('broken')").find("broken"), std::string::npos);
    try {
        host.run(L"error('broken')");
        FAIL();
    } catch (const J3Exception& error) {
        EXPECT_EQ(error.message(), L"can't execute LUA script");
    }
    EXPECT_EQ(host.height(), 0);
    EXPECT_THROW(host.runScript(), J3Exception); // nothing is loaded
    host.cleanup();
    EXPECT_THROW(host.runScript(), J3Exception);
}

TEST(K7LuaState, LeavesAWrappedStateOpen)
{
    lua_State* const L = luaL_newstate();
    {
        K7LuaState wrapped(L);
        wrapped.writeInt32(L"x", 5);
        EXPECT_FALSE(wrapped.setMemoryLimit(1));
        wrapped.cleanup();
        EXPECT_TRUE(wrapped.isValid());
    }
    lua_getglobal(L, "x");
    EXPECT_EQ(lua_tonumber(L, -1), 5);
    lua_close(L);
}

TEST(K7LuaState, CallsFunctionsWithArguments)
{
    struct TwoAndThree : K7LuaFunction0 {
        TwoAndThree() : K7LuaFunction0(L"add", 2) {}
        bool addFunctionParam(K7LuaStack* stack) override
        {
            const bool found = K7LuaFunction0::addFunctionParam(stack);
            for (const int32 argument : {2, 3})
                stack->pushValue(&argument);
            return found;
        }
    } add;
    LuaHost host(L"function add(a, b) return a + b end  function fail() error('no') end");
    EXPECT_TRUE(host.call(&add));
    int32 sum = 0;
    EXPECT_TRUE(host.getValue(&sum));
    EXPECT_EQ(sum, 5);
    K7LuaFunction0 fail(L"fail");
    EXPECT_FALSE(host.call(&fail));
    K7LuaFunction0 missing(L"missing");
    EXPECT_FALSE(host.callLuaFunction(0, missing));
    K7LuaFunction0 lacking(L"add", 2); // pushes fewer arguments than it says
    EXPECT_FALSE(host.callLuaFunction(0, lacking));
    EXPECT_FALSE(host.callLuaFunction(5000000, add)); // more results than any stack holds
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaState, ExchangesNestedObjects)
{
    LuaHost host(L"");
    const Nested three(3);
    EXPECT_TRUE(host.writeObject(L"o", three));
    host.run(L"seen = o.level .. o.inner.level .. o.inner.inner.level  o.inner.inner.label = '깊이'");
    EXPECT_EQ(host.text(L"seen"), "321");
    Nested read;
    EXPECT_TRUE(host.readObject(L"o", &read));
    EXPECT_EQ(read.inner->inner->label, L"깊이");
    EXPECT_FALSE(host.readObject(L"seen", &read));
    EXPECT_TRUE(host.readObject(L"o", nullptr));
    EXPECT_EQ(host.height(), 0);
    EXPECT_EQ(host.depth(), 0U);
}

TEST(K7LuaState, PassesObjectsToAndFromFunctions)
{
    class Deepen : public K7LuaFunction0 {
    public:
        Deepen() : K7LuaFunction0(L"deepen", 1) {}
        bool addFunctionParam(K7LuaStack* stack) override
        {
            return K7LuaFunction0::addFunctionParam(stack) &&
                   static_cast<K7LuaState*>(stack)->writeObject(L"", Nested(2));
        }
    };
    LuaHost host(L"function deepen(o) return {level = o.level + 1, inner = o} end");
    Deepen deepen;
    Nested result;
    EXPECT_TRUE(host.call(&deepen, &result));
    EXPECT_EQ(result.level, 3);
    EXPECT_EQ(result.inner->inner->label, L"level 1");
    EXPECT_EQ(host.height(), 0);
    const Nested one(1);
    host.pushValue(&one);
    EXPECT_TRUE(host.getValue(&result));
    EXPECT_EQ(result.level, 1);
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaState, AnObjectThatThrowsLeavesPathAndStack)
{
    class Throwing : public K7LuaObject {
    public:
        bool archiveTo(K7LuaState& state) const override { return unarchiveFrom(state), true; }
        static bool unarchiveFrom(K7LuaState& state)
        {
            state.addPath(L"deep");
            static_cast<void>(state.pathInto(L"deep"));
            throw "text";
        }
        bool unarchiveFrom(const K7LuaState&) override { throw 5; }
    };
    LuaHost host(L"o = {}");
    Throwing object;
    EXPECT_FALSE(host.readObject(L"o", &object));
    EXPECT_THROW(host.writeObject(L"o", object), const char*);
    EXPECT_THROW(host.writeObject(L"", object), const char*);
    EXPECT_EQ(host.height(), 0);
    EXPECT_EQ(host.depth(), 0U);
}

TEST(K7LuaState, ReadsArraysByTheStatedRanges)
{
    LuaHost host(L"t = {1, 2, 'x', 4, 5}  e = {}");
    uint32 out[6] = {};
    EXPECT_TRUE(host.readUint32Array(L"t", out, 2, 1)); // start lies at or beyond the limit
    EXPECT_TRUE(host.readUint32Array(L"missing", out, 0, 2));
    EXPECT_EQ(out[0], 0U);
    EXPECT_TRUE(host.readUint32Array(L"t", out, 1, 4)); // elements 1 to 3
    EXPECT_EQ((std::vector<uint32>(out, out + 6)), (std::vector<uint32>{0, 2, 0, 4, 0, 0}));
    EXPECT_TRUE(host.readUint32Array(L"t", out, 2, 0)); // the limit is 5 - 2
    EXPECT_EQ(out[4], 0U);
    EXPECT_TRUE(host.readUint32Array(L"t", out, 7, 0));
    EXPECT_EQ(host.height(), 0);
    EXPECT_FALSE(host.readUint32Array(L"t", out, 6, 1));
    EXPECT_EQ(host.depth(), 1U); // still entered
    const std::tuple<uint32, uint32, int64, int64, int64> refused[] = {{6, 1, 0, 4, 6},
                                                                       {2, 0xFFFFFFFF, 1, 3, 0xFFFFFFFF}};
    for (const auto& [start, count, begin, end, position] : refused)
        try {
            host.getArray(out, start, count);
            ADD_FAILURE() << start;
        } catch (const J3RangeException& error) {
            EXPECT_EQ(error.message(), L"read...Array");
            EXPECT_EQ(error.begin(), begin);
            EXPECT_EQ(error.end(), end);
            EXPECT_EQ(error.position(), position);
        }
    host.pathOut();
    std::vector<uint32> numbers{9};
    EXPECT_FALSE(host.readUint32Vector(L"e", &numbers));
    EXPECT_FALSE(host.readUint32Vector(L"t", nullptr));
    EXPECT_EQ(numbers, std::vector<uint32>{9});
    EXPECT_TRUE(host.readUint32Vector(L"t", &numbers));
    EXPECT_EQ(numbers, (std::vector<uint32>{1, 2, 0, 4, 5})); // grown with zeros
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaState, WritesArraysOfEveryElement)
{
    LuaHost host(L"u = {0, 0, 0, 7}");
    const uint32 numbers[] = {4, 5};
    EXPECT_TRUE(host.writeUint32Array(L"u", numbers, 2));
    EXPECT_EQ(host.getTableLength(L"u"), 4U); // the rest stays
    const auto expectKept = [&](const auto& written) {
        std::decay_t<decltype(written)> read;
        host.writeObjects(L"items", written);
        EXPECT_TRUE(host.readObjects(L"items", &read));
        EXPECT_EQ(read, written);
    };
    expectKept(std::vector<bool>{true, false});
    expectKept(std::vector<J3String>{L"a", L"글"});
    const Nested objects[2] = {Nested(1), Nested(2)};
    host.writeObjectArray(L"objects", objects, 2);
    Nested objectsRead[2];
    EXPECT_TRUE(host.readObjectArray(L"objects", objectsRead, 0, 2));
    EXPECT_EQ(objectsRead[1].inner->level, 1);
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaState, AllocatesNothingForAScalar)
{
    LuaHost host(L"");
    int32 value = 0;
    const J3String threshold(L"threshold");
    host.writeInt32(threshold, 1);
    host.readInt32(threshold, &value);
    const std::size_t before = allocations;
    for (int i = 0; i < 100; ++i) {
        host.writeInt32(threshold, value + 1);
        host.readInt32(threshold, &value);
    }
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(value, 101);
}
