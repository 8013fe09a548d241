// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Loading, running and calling; objects and arrays by name.
#include "Lua/K7LuaState.h"

#include "Base/ForcedUnwind_p.h"
#include "Foundation/J3MemoryStream.h"
#include "Lua/detail/LuaExtras_p.h"
#include "Lua/detail/LuaRun_p.h"

#include <algorithm>

namespace Kivo {

namespace {

constexpr const char* CHUNK_NAME = "line";

/// A script to be loaded under protection: a file, or a text.
struct Script {
    const char* path;
    const char* text;
    std::size_t size;
    int status;
};

/// Result: the chunk, or what is wrong with it.
int loadStep(lua_State* L)
{
    Script& script = *static_cast<Script*>(lua_touserdata(L, 1));
    script.status = script.path ? luaL_loadfilex(L, script.path, nullptr)
                                : luaL_loadbufferx(L, script.text, script.size, CHUNK_NAME, nullptr);
    return 1;
}

/// Argument: the script. Results: its own.
int runStep(lua_State* L)
{
    lua_callk(L, 0, LUA_MULTRET, 0, nullptr);
    return lua_gettop(L) - 1;
}

int refuseExit(lua_State* L) { return luaL_error(L, "os.exit: a script does not end its host"); }

int openLibrariesStep(lua_State* L)
{
    luaL_openlibs(L);
    lua_getglobal(L, "os");
    lua_pushcclosure(L, refuseExit, 0);
    lua_setfield(L, -2, "exit");
    return 0;
}

/// Puts the path of tables entered back to its depth, and the stack to its height, however an object left them.
template <class Path>
class Entered {
public:
    Entered(lua_State* L, Path& path, int height) : _L(L), _path(path), _depth(path.size()), _height(height) {}
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;
    ~Entered()
    {
        if (!_L)
            return;
        while (_path.size() > _depth)
            _path.pop_back();
        lua_settop(_L, _height);
    }

    void keep(int height) { _height = height; }

    /// Leave everything as it is.
    void release() { _L = nullptr; }

private:
    lua_State* _L;
    Path& _path;
    std::size_t _depth;
    int _height;
};

} // namespace

K7LuaObject::~K7LuaObject() = default;

K7LuaState::K7LuaState() : K7LuaStack(nullptr, true) {}

K7LuaState::K7LuaState(lua_State* state) : K7LuaStack(state, false) {}

K7LuaState::~K7LuaState() { cleanup(); }

bool K7LuaState::open()
{
    _luaState = luaL_newstate();
    _path.clear();
    if (!_luaState)
        return false;
    return !_selfOpen || startExtras();
}

bool K7LuaState::openLibraries()
{
    if (!perform(openLibrariesStep, nullptr, 0, 0))
        return false;
    return !_selfOpen || setInstructionLimit(extras().limits.instructions);
}

bool K7LuaState::load(const char* path, const char* text, std::size_t size)
{
    Script script{path, text, size, LUA_OK};
    if (!perform(loadStep, &script, 0, 1))
        return false;
    if (script.status == LUA_OK)
        return true;
    traceError(_luaState);
    lua_settop(_luaState, -2);
    return false;
}

bool K7LuaState::init(const J3String& path)
{
    return open() && openLibraries() && load(path.to_string().c_str(), nullptr, 0);
}

bool K7LuaState::init(const J3MemoryStream& stream)
{
    return open() && stream.isValid() && stream.size() > 0 && openLibraries() &&
           load(nullptr, reinterpret_cast<const char*>(stream.buffer()), stream.size());
}

bool K7LuaState::initWithBuffer(const J3String& text)
{
    if (!open() || text.isEmpty() || !openLibraries())
        return false;
    const std::string narrow = text.to_string();
    return load(nullptr, narrow.data(), narrow.size());
}

bool K7LuaState::init(const K7LuaResource&) { return false; }

void K7LuaState::cleanup()
{
    if (!_selfOpen || !_luaState)
        return;
    lua_close(_luaState);
    _luaState = nullptr;
    _path.clear();
}

bool K7LuaState::runScript()
{
    if (!hasValue() || !perform(runStep, nullptr, 1, LUA_MULTRET))
        throw J3Exception(L"can't execute LUA script");
    return true;
}

bool K7LuaState::callLuaFunction(int32 resultCount, K7LuaFunction0& function)
{
    if (!_luaState)
        return false;
    if (!hasRoom(1)) { // "too many arguments"
        traceError(_luaState);
        return false;
    }
    const int height = lua_gettop(_luaState);
    const int argc = static_cast<int>(function.argc());
    Entered place(_luaState, _path, height);
    if (!function.addFunctionParam(this) || lua_gettop(_luaState) <= height + argc ||
        (resultCount > argc && !hasRoom(resultCount)) || !callProtected(argc, resultCount))
        return false;
    place.release();
    return true;
}

bool K7LuaState::call(K7LuaFunction0* function) { return function && callLuaFunction(1, *function); }

bool K7LuaState::call(K7LuaFunction0* function, K7LuaArchivable* result)
{
    return call(function) && readObject(L"", result);
}

bool K7LuaState::writeObject(const J3String& name, const K7LuaArchivable& object)
{
    if (!hasRoom(1))
        return true;
    const int height = lua_gettop(_luaState);
    Entered place(_luaState, _path, height);
    if (!name.isEmpty()) {
        addPath(name);
        if (pathInto(name))
            object.archiveTo(*this);
        return true;
    }
    if (pushTable()) {
        _path.emplace_back();
        object.archiveTo(*this);
        lua_settop(_luaState, height + 1);
    } else {
        lua_pushnil(_luaState);
    }
    place.keep(height + 1);
    return true;
}

K7_CATCHES_FORCED_UNWIND bool K7LuaState::readObject(const J3String& name, K7LuaArchivable* object) const
{
    if (!_luaState || (name.isEmpty() && !hasValue()))
        return false;
    const Entered place(_luaState, _path, lua_gettop(_luaState) - (name.isEmpty() ? 1 : 0));
    try {
        if (!pathInto(name))
            return false;
        if (object)
            object->unarchiveFrom(*this);
        return true;
    } catch (ForcedUnwind&) {
        throw;
    } catch (...) { // of whatever type: it is the object's
        return false;
    }
}

bool K7LuaState::getValue(K7LuaArchivable* out) const
{
    if (out)
        return readObject(L"", out);
    if (hasValue())
        lua_settop(_luaState, -2);
    return false;
}

void K7LuaState::pushValue(const K7LuaArchivable* in)
{
    if (in)
        writeObject(L"", *in);
    else if (hasRoom(1))
        lua_pushnil(_luaState);
}

uint32 K7LuaState::getTableLength(const J3String& name) const
{
    if (!pathInto(name))
        return 0;
    const uint32 length = K7LuaStack::getTableLength();
    pathOut();
    return length;
}

bool K7LuaState::writeUint32Array(const J3String& name, const uint32* data, uint32 count)
{
    return writeObjectArray(name, data, count);
}

bool K7LuaState::readUint32Array(const J3String& name, uint32* out, uint32 start, uint32 count) const
{
    return readObjectArray(name, out, start, count);
}

bool K7LuaState::readUint32Vector(const J3String& name, std::vector<uint32>* out) const
{
    return readObjects(name, out);
}

uint32 K7LuaState::walkEnd(uint32 length, uint32 start, uint32 count)
{
    if (count == 0)
        return length > start ? length - start : 0;
    const int64 last = static_cast<int64>(length) - 1;
    if (length <= start)
        throw J3RangeException(L"read...Array", 0, last, start);
    if (static_cast<uint64>(start) + count > length)
        throw J3RangeException(L"read...Array", 1, static_cast<int64>(length) - start, count);
    return count;
}

uint32 K7LuaState::lengthHeld() const
{
    constexpr uint32 HARMLESS = 1 << 20; // what a vector may as well take for a "__len" that says so
    const uint32 length = K7LuaStack::getTableLength();
    return length <= std::max<std::size_t>(lua_rawlen(_luaState, -1), HARMLESS) ? length : 0;
}

} // namespace Kivo
