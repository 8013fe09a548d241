// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The class "sal": the inventory's sections as tables, the library's queries, a ping test.
//
// A query that cannot be answered gives nil and the reason; wrong arguments are errors.
#include "LuaMethods.h"

#include "Grade.h"
#include "PingResults.h"

#include "Core/K7InetAddress.h"
#include "OS/Network/Testing/K7Pinger.h"
#include "OS/System/Attribute.h"
#include "OS/System/CPU.h"
#include "OS/System/Memory.h"
#include "OS/System/Network.h"

#include <array>
#include <utility>

#include <lua.hpp>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;

namespace {

void push(lua_State* L, const Value& value);

void push(lua_State* L, const std::string& text) { lua_pushlstring(L, text.data(), text.size()); }

/// Push the elements of a list as an array, each as @p pushElement pushes it.
template <class Elements, class Push>
void pushArray(lua_State* L, const Elements& elements, const Push& pushElement)
{
    luaL_checkstack(L, 3, "too deep");
    lua_createtable(L, static_cast<int>(elements.size()), 0);
    int index = 0;
    for (const auto& element : elements) {
        pushElement(element);
        lua_rawseti(L, -2, ++index);
    }
}

struct Pusher {
    lua_State* L;

    void operator()(std::monostate) const { lua_pushnil(L); }
    void operator()(bool flag) const { lua_pushboolean(L, flag); }
    void operator()(int64 number) const { lua_pushnumber(L, static_cast<lua_Number>(number)); }
    void operator()(uint64 number) const { lua_pushnumber(L, static_cast<lua_Number>(number)); }
    void operator()(const Real& number) const { lua_pushnumber(L, number.value); }
    void operator()(const std::string& text) const { push(L, text); }
    void operator()(const List& list) const
    {
        pushArray(L, list, [this](const Value& value) { push(L, value); });
    }
    void operator()(const Row& row) const
    {
        luaL_checkstack(L, 3, "too deep");
        lua_createtable(L, 0, static_cast<int>(row.size()));
        for (const Field& field : row) {
            push(L, field.value);
            lua_setfield(L, -2, field.key);
        }
    }
};

void push(lua_State* L, const Value& value) { std::visit(Pusher{L}, value.storage()); }

/// Push one record of a sheet as a table under its columns' keys.
void pushRecord(lua_State* L, const std::vector<ColumnInfo>& columns, const std::vector<Value>& values)
{
    lua_createtable(L, 0, static_cast<int>(columns.size()));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        push(L, values[i]);
        lua_setfield(L, -2, columns[i].key);
    }
}

std::string textOf(const Problem& problem)
{
    return problem.what + ": " + (problem.subject.empty() ? "" : problem.subject + ": ") + problem.reason;
}

/// Results: the record, or the list of records, or nil when nothing is known; and an array of what could not be read,
/// if anything.
int pushSheet(lua_State* L, const Sheet& sheet)
{
    if (!sheet.data.known)
        lua_pushnil(L);
    else if (sheet.shape == Shape::RECORD)
        pushRecord(L, sheet.columns, sheet.data.rows.front());
    else
        pushArray(L, sheet.data.rows, [&](const auto& values) { pushRecord(L, sheet.columns, values); });
    if (sheet.data.problems.empty())
        return 1;
    pushArray(L, sheet.data.problems, [L](const Problem& problem) { push(L, textOf(problem)); });
    return 2;
}

/// sal.memory(), sal.network_interfaces() ...: a native function cannot be told which section it stands for, so there
/// is one for each.
template <std::size_t Index>
int readSection(lua_State* L)
{
    return pushSheet(L, collectSheet(sections()[Index]));
}

template <std::size_t... Indexes>
constexpr auto sectionReaders(std::index_sequence<Indexes...>)
{
    return std::array{&K7LuaState::guarded<readSection<Indexes>>...};
}

constexpr auto SECTION_READERS = sectionReaders(std::make_index_sequence<32>());

/// sal.sections(): the names of the methods that read a section.
int listSections(lua_State* L)
{
    pushArray(L, sections(), [L](const Section& section) { lua_pushstring(L, section.key); });
    return 1;
}

/// Results of a query that gave no answer: nil and, when something failed, the reason.
int pushFailure(lua_State* L, const K7SystemUtil::Failure& failure = K7SystemUtil::lastFailure())
{
    lua_pushnil(L);
    if (failure.operation.isEmpty())
        return 1;
    const J3String subject = failure.subject.isEmpty() ? L"" : failure.subject + L": ";
    push(L, (subject + failure.reason).to_string());
    return 2;
}

/// sal.attribute(path): the text of a file of the system, such as "/sys/class/net/eth0/address".
int readAttribute(lua_State* L)
{
    const char* const path = luaL_checkstring(L, 1);
    std::string text;
    if (!K7SystemUtil::Attribute::readText(path, &text))
        return pushFailure(L);
    push(L, text);
    return 1;
}

/// sal.memory_counter(name): a line of /proc/meminfo by its name.
int memoryCounter(lua_State* L)
{
    const char* const name = luaL_checkstring(L, 1);
    lua_pushnumber(L, static_cast<lua_Number>(K7SystemUtil::Memory::counterOf(name)));
    return 1;
}

/// sal.interrupt_count(name): how often an interrupt came, over all cores.
int interruptCount(lua_State* L)
{
    const char* const name = luaL_checkstring(L, 1);
    lua_pushnumber(L, static_cast<lua_Number>(K7SystemUtil::CPU::interruptCountOf(name)));
    return 1;
}

/// sal.resolve(host): its addresses.
int resolve(lua_State* L)
{
    const char* const host = luaL_checkstring(L, 1);
    std::vector<J3String> addresses;
    if (!K7SystemUtil::Network::getAddrInfo(&addresses, host))
        return pushFailure(L);
    pushArray(L, addresses, [L](const J3String& address) { push(L, address.to_string()); });
    return 1;
}

/// sal.connects(interface, host, port): whether a TCP connection can be made.
int connects(lua_State* L)
{
    const char* const interface = luaL_checkstring(L, 1);
    const char* const host = luaL_checkstring(L, 2);
    const lua_Integer port = luaL_checkinteger(L, 3);
    luaL_argcheck(L, port > 0 && port <= 65535, 3, "not a port");
    if (!K7SystemUtil::Network::testConnectivity(interface, host, static_cast<uint16>(port)))
        return pushFailure(L);
    lua_pushboolean(L, 1);
    return 1;
}

struct PingRequest {
    J3String interface;
    uint32 rounds = 5;
    std::vector<J3String> targets;
};

/// What the table at the top of the stack asks for.
PingRequest pingRequestOf(const K7LuaState& arguments)
{
    PingRequest request;
    if (!arguments.pathInto(L"") || !arguments.readString(L"interface", &request.interface) ||
        !arguments.readObjects(L"targets", &request.targets))
        throw J3Exception(L"sal.ping takes a table: {interface = \"eth0\", targets = {\"192.168.0.1\"}, rounds = 5, "
                          L"on_result = function(result) ... end}");
    arguments.readUint32(L"rounds", &request.rounds);
    if (request.rounds == 0 || request.rounds > 1000)
        throw J3Exception(L"sal.ping: the rounds are 1 to 1000");
    return request;
}

/// sal.ping{...}: the graded results, each of which on_result was called with, in the columns of "k7sal ping".
int ping(lua_State* L)
{
    lua_settop(L, 1);
    const PingRequest request = pingRequestOf(K7LuaState(L));
    if (!K7SystemUtil::systemRoot().isEmpty())
        throw J3Exception(L"sal.ping needs the live system");
    PingResults results;
    K7Pinger pinger;
    pinger.setTestCount(request.rounds);
    for (const J3String& target : request.targets) {
        K7InetAddress address;
        if (!address.fromString(target) || !address.isIPv4() || !address.isValid())
            throw J3Exception(L"sal.ping: \"" + target + L"\" is not an IPv4 address");
        pinger.addTarget(static_cast<int32>(&target - request.targets.data()), address);
    }
    pinger.addListener(&results);
    pinger.init(request.interface);
    if (!pinger.isRunning())
        return pushFailure(L, pinger.testFailure());
    pinger.start();
    constexpr std::chrono::seconds SPARE(5);
    results.waitForEnd(std::chrono::milliseconds(pinger.expectedDuration()) + SPARE);
    const Sheet sheet = sheetOf(gradesOf(results.all()));
    pinger.cleanup();
    if (!pinger.testFailure().operation.isEmpty())
        return pushFailure(L, pinger.testFailure());

    lua_getfield(L, 1, "on_result");
    if (lua_isfunction(L, -1))
        for (const std::vector<Value>& values : sheet.data.rows) {
            lua_pushvalue(L, -1);
            pushRecord(L, sheet.columns, values);
            lua_call(L, 1, 0);
        }
    return pushSheet(L, sheet);
}

} // namespace

void bindSal(K7LuaState& state)
{
    state.addMethod(L"sections", K7LuaState::guarded<listSections>);
    for (std::size_t i = 0; i < std::min(sections().size(), SECTION_READERS.size()); ++i)
        state.addMethod(sections()[i].key, SECTION_READERS[i]);
    state.addMethod(L"attribute", K7LuaState::guarded<readAttribute>);
    state.addMethod(L"memory_counter", K7LuaState::guarded<memoryCounter>);
    state.addMethod(L"interrupt_count", K7LuaState::guarded<interruptCount>);
    state.addMethod(L"resolve", K7LuaState::guarded<resolve>);
    state.addMethod(L"connects", K7LuaState::guarded<connects>);
    state.addMethod(L"ping", K7LuaState::guarded<ping>);
    state.bindClass(L"K7.sal", L"sal");
}

} // namespace K7Tool
