// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Typed values on the stack of a Lua state, and the tables that a caller has entered by name.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3ScalarTypes.h"
#include "Foundation/J3String.h"

#include <functional>
#include <memory>
#include <vector>

struct lua_State;

/// Expands X(Name, Type) for every scalar type that crosses into Lua: X(Bool, bool), X(Int8, int8) ... X(Double,
/// float64). Operations are named after Name: readInt8, writeInt8.
#define K7_LUA_SCALAR_TYPES(X)                                                                                         \
    X(Bool, bool)                                                                                                      \
    J3_INTEGER_TYPES(X)                                                                                                \
    X(Float32, float32)                                                                                                \
    X(Double, float64)

/// The same and X(String, J3String).
#define K7_LUA_TYPES(X)                                                                                                \
    K7_LUA_SCALAR_TYPES(X)                                                                                             \
    X(String, J3String)

namespace Kivo {

class K7LuaExtras;

/// The index of the stack's top.
inline constexpr int32 K7_LUA_STACK_TOP = -1;

/// Reads and writes values of a Lua state in the current table: the globals, or the innermost of the tables entered.
///
/// A typed read takes the value at the top of the stack and always pops it; a typed write pushes a value, which
/// putItem() stores under a name. Whatever Lua raises meanwhile (an `__index` that fails, no memory, a full stack) is
/// the operation's failure: it never leaves the operation, and the stack is as high as after a success unless said
/// otherwise. Without a state nothing is read, pushed or popped.
///
/// *Threads*: a state and all objects over it belong to one thread at a time.
class K7SAL_API K7LuaStack {
public:
    /// Takes the text of traceError().
    using TraceSink = std::function<void(const J3String& report)>;

    /// @param state    the Lua state to work on, not owned; null is none
    /// @param selfOpen whether the state is this object's own, to be closed by K7LuaState::cleanup()
    K7LuaStack(lua_State* state, bool selfOpen);

    K7LuaStack(const K7LuaStack&) = delete;
    K7LuaStack& operator=(const K7LuaStack&) = delete;
    virtual ~K7LuaStack();

    /// Whether there is a state.
    [[nodiscard]] bool isValid() const { return _luaState != nullptr; }

    /// Whether the current table is that of the globals.
    [[nodiscard]] bool isRoot() const { return _path.empty(); }

    /// Push the item @p name of the current table; nil when it cannot be had.
    /// @return its Lua type: 0 nil, 1 boolean, 3 number, 4 string, 5 table, 6 function; -1 when nothing could be pushed
    int32 getItem(const J3String& name) const;

    /// Pop the top of the stack into the item @p name of the current table.
    void putItem(const J3String& name);

    /// Pop one value.
    void popTop();

    /// Whether the item @p name of the current table is a table.
    [[nodiscard]] bool hasTable(const J3String& name) const;

    /// Whether the item @p name of the current table is a function.
    [[nodiscard]] bool hasFunction(const J3String& name) const;

    /// Store a new empty table as @p name.
    void addTable(const J3String& name);

    /// Store a new empty table as @p name unless there is a table of that name.
    void addPath(const J3String& name);

    /// Enter the table @p name of the current table, which stays on the stack as the new current table; an empty name
    /// enters the table at the top of the stack. A value that is not a table is popped.
    /// @return whether a table was entered
    bool pathInto(const J3String& name) const;

    /// Leave the table that the last successful pathInto() entered.
    void pathOut() const;

    /// The length of the table at the top, as the operator # gives it; 0 when it has none.
    [[nodiscard]] uint32 getTableLength() const;

    /// Push element @p i, counted from 0, of the table at the top; nil when there is none.
    void getTableItem(uint32 i) const;

    /// Pop the top into element @p i, counted from 0, of the table below it.
    void setTableItem(uint32 i);

#define K7_LUA_ACCESS(Name, Type)                                                                                      \
    bool getValue(Type* out) const;                                                                                    \
    void pushValue(const Type* in);
    /// getValue() pops the top into @p out, and false leaves @p out as it is: for a null one and for a value of another
    /// Lua type. Numbers, and strings that read as numbers, are converted as Lua does and cut to the type's width;
    /// 64-bit integers travel as doubles, what they cannot hold becoming the nearest limit. A text takes strings and
    /// numbers. pushValue() pushes nil for a null @p in; a text ends at its first null character.
    /// @{
    K7_LUA_TYPES(K7_LUA_ACCESS)
    /// @}
#undef K7_LUA_ACCESS

    /// Describe the stack of @p L to the trace sink; nothing is printed or returned without one.
    void traceError(lua_State* L) const;

    /// Attach what traceError() hands its reports to; none at first, and an empty one detaches.
    void setTraceSink(TraceSink sink);

protected:
    /// One native step, run by perform(): its data at index 1, its arguments above.
    using Step = int (*)(lua_State*);

    /// Whether there is a state whose stack has room for @p slots more values.
    [[nodiscard]] K7SAL_LOCAL bool hasRoom(int32 slots) const;

    /// Whether there is a state whose stack holds a value.
    [[nodiscard]] K7SAL_LOCAL bool hasValue() const;

    /// Push a new table. @return whether one was pushed
    K7SAL_LOCAL bool pushTable();

    /// Run @p step where Lua may raise, with @p data and the topmost @p arguments values, which are popped. What it
    /// raises goes to traceError(), and leaves nothing on the stack.
    /// @return whether it ended with @p results values
    K7SAL_LOCAL bool perform(Step step, void* data, int32 arguments, int32 results) const;

    /// Call the function that lies below its @p arguments, by lua_pcallk(). What it raises goes to traceError().
    /// @return whether it ended with @p results values; otherwise nothing of it stays on the stack
    K7SAL_LOCAL bool callProtected(int32 arguments, int32 results) const;

    /// Read the item @p name of the current table, or store a value as that.
    /// @{
    template <class T>
    K7SAL_LOCAL bool readItem(const J3String& name, T* out) const;
    template <class T>
    K7SAL_LOCAL void writeItem(const J3String& name, const T& value);
    /// @}

    /// What is kept for the state beside it, made at first need.
    K7SAL_LOCAL K7LuaExtras& extras() const;

    lua_State* _luaState;
    mutable std::vector<J3String> _path; ///< the tables entered, outermost first
    bool _selfOpen;

private:
    K7SAL_LOCAL int32 pushNamed(const J3String& name) const;
    K7SAL_LOCAL void putNamed(const J3String& name);

    mutable std::unique_ptr<K7LuaExtras> _extras;
};

/// One call of a Lua function, without arguments of its own: a subclass pushes some.
class K7SAL_API K7LuaFunction0 {
public:
    /// @param functionName the function's name in the current table
    /// @param argc         the number of arguments that will lie above it when it is called
    explicit K7LuaFunction0(J3String functionName, uint32 argc = 0);

    K7LuaFunction0(const K7LuaFunction0&) = delete;
    K7LuaFunction0& operator=(const K7LuaFunction0&) = delete;
    virtual ~K7LuaFunction0();

    /// Push the function, and in a subclass the arguments after it.
    /// @return whether there is such a function; nothing is pushed otherwise
    virtual bool addFunctionParam(K7LuaStack* stack);

    [[nodiscard]] uint32 argc() const { return _argc; }

private:
    const J3String _functionName;
    const uint32 _argc;
};

/// Check the value at the top of the stack, or its field @p name, which is pushed and stays.
/// @return true
/// @throws const char* "is not table" (after one value is popped), "got Nill access", "is no string", "is not number",
/// "is not bool"
/// @{
K7SAL_API bool checkTable(lua_State* L);
K7SAL_API bool checkNotNil(lua_State* L);
K7SAL_API bool checkString(lua_State* L, const J3String& name);
K7SAL_API bool checkNumber(lua_State* L, const J3String& name);
K7SAL_API bool checkBool(lua_State* L, const J3String& name);
/// @}

/// Append the value at @p index to @p out: "(number) 5", "(string) 'text'", "(boolean) true", "(table) 0x55...".
K7SAL_API void luaPrintStackAt(lua_State* L, int32 index, J3String* out);

/// Append a line for every value of the stack to @p out, "\t=> 1: (number) 5\n".
K7SAL_API void luaPrintStack(lua_State* L, J3String* out);

} // namespace Kivo
