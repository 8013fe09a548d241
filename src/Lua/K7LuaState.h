// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A Lua state: one script, its values by name, its functions, and native functions and classes for it.
#pragma once

#include "Foundation/J3Exception.h"
#include "Lua/K7LuaObject.h"
#include "Lua/K7LuaStack.h"

#include <concepts>
#include <string>

namespace Kivo {

class J3MemoryStream;

/// Names a script among the host's resources; reserved.
struct K7LuaResource {
    J3String _script;
    J3String _module;
};

/// Owns one Lua state or wraps one, and exchanges values with it by name.
///
/// A script, however wrong or hostile, never ends the host by an error: what it raises is a failure of the operation
/// that ran it. The standard libraries are all open to it, though, `io` and `os.execute` among them (os.exit alone
/// raises an error instead), and so are precompiled chunks, which Lua does not verify.
///
/// *Threads*: a state and all objects over it belong to one thread at a time.
class K7SAL_API K7LuaState : public K7LuaStack {
public:
    /// A native function: takes its arguments from the stack and returns how many results it pushed.
    using FuncByLua = int (*)(lua_State*);

    /// A native method under its name in UTF-8.
    struct LuaBindFuncInfo {
        std::string _name;
        FuncByLua _func;
    };

    /// Without a state; the one that init() makes is this object's own.
    K7LuaState();

    /// Over a state of someone else's, which is never closed and must outlive this object's use of it.
    explicit K7LuaState(lua_State* state);

    ~K7LuaState() override;

    /// Make a state with the standard libraries and load a script into it, without running it: a file by its path, a
    /// whole stream, or a text. A state that the object had is neither used nor closed any more: cleanup() comes first.
    /// @return whether it was loaded; what is wrong goes to traceError(). A resource is never loaded.
    /// @{
    bool init(const J3String& path);
    bool init(const J3MemoryStream& stream);
    bool initWithBuffer(const J3String& text);
    bool init(const K7LuaResource& resource);
    /// @}

    /// Close the state when it is this object's own.
    void cleanup();

    /// Run the loaded script; its results stay on the stack.
    /// @return true
    /// @throws J3Exception "can't execute LUA script" when it raises an error, after traceError()
    bool runScript();

    /// Call a Lua function, whose @p resultCount results stay on the stack.
    /// @return whether it ran to its end; nothing stays on the stack otherwise
    bool callLuaFunction(int32 resultCount, K7LuaFunction0& function);

    /// Call a Lua function with one result, which stays on the stack.
    bool call(K7LuaFunction0* function);

    /// Call a Lua function that gives a table, and read that into @p result.
    bool call(K7LuaFunction0* function, K7LuaArchivable* result);

    /// Make @p function the global @p name, whatever the current table. @return true
    bool writeFunction(const J3String& name, FuncByLua function);

    /// What a native function throws must not reach Lua, which takes it for an error without a text. This gives the
    /// function in a form that turns a std::exception, a text or a J3Object it throws into a Lua error with its text:
    ///
    ///     state.addMethod(L"ping", K7LuaState::guarded<ping>);
    template <FuncByLua Function>
    static int guarded(lua_State* L)
    {
        return callGuarded(L, Function);
    }

#define K7_LUA_ACCESS(Name, Type)                                                                                      \
    bool read##Name(const J3String& name, Type* out) const;                                                            \
    bool write##Name(const J3String& name, Type value);
    /// Read or write an item of the current table, as getValue() and pushValue() do. A write returns true.
    /// @{
    K7_LUA_SCALAR_TYPES(K7_LUA_ACCESS)
    bool readString(const J3String& name, J3String* out) const;
    bool writeString(const J3String& name, const J3String& value);
    /// @}
#undef K7_LUA_ACCESS

    /// Write an object into the table @p name of the current one, which is made unless it exists. An empty name leaves
    /// a new table with the object's fields on the stack: how an object becomes an argument.
    /// @return true
    bool writeObject(const J3String& name, const K7LuaArchivable& object);

    /// Read an object from the table @p name of the current one, or with an empty name from the table at the top of
    /// the stack, which is popped.
    /// @return whether there was such a table and the object threw nothing; what unarchiveFrom() returned is not asked
    bool readObject(const J3String& name, K7LuaArchivable* object) const;

    using K7LuaStack::getTableLength;
    using K7LuaStack::getValue;
    using K7LuaStack::pushValue;

    /// Read an object from the table at the top, which is popped; false for a null @p out and for another value.
    bool getValue(K7LuaArchivable* out) const;

    /// Push a new table with the object's fields; nil for a null @p in.
    void pushValue(const K7LuaArchivable* in);

    /// The length of the table @p name; 0 when there is no such table.
    [[nodiscard]] uint32 getTableLength(const J3String& name) const;

    /// Store @p count numbers in the table @p name, which is made unless it exists. @return true
    bool writeUint32Array(const J3String& name, const uint32* data, uint32 count);

    /// Read numbers of the table @p name as getArray() does. Nothing is read when there is no such table.
    /// @return false when the range is not there: the table is then left entered
    bool readUint32Array(const J3String& name, uint32* out, uint32 start, uint32 count) const;

    /// Read all numbers of the table @p name.
    /// @return false, with @p out as it was, for a null one and when the table is empty or missing
    bool readUint32Vector(const J3String& name, std::vector<uint32>* out) const;

    /// Store @p count elements in the current table. @return true
    template <class T>
    bool setArray(const T* data, uint32 count);

    /// Read the elements @p start up to, but without, @p count of the current table into the same places of @p out; a
    /// @p count of 0 stands for the table's length less @p start. What is not a T leaves its place as it is.
    /// @return true
    /// @throws J3RangeException "read...Array" when count is not 0 and start + count lies beyond the table
    template <class T>
    bool getArray(T* out, uint32 start, uint32 count) const;

    /// writeUint32Array() and readUint32Array() for elements of any type, scalars, texts and objects.
    /// @{
    template <class T>
    bool writeObjectArray(const J3String& name, const T* data, uint32 count);
    template <class T>
    bool readObjectArray(const J3String& name, T* out, uint32 start, uint32 count) const;
    /// @}

    /// The same for a whole vector, by the rules of readUint32Vector().
    /// @{
    template <class T>
    bool writeObjects(const J3String& name, const std::vector<T>& objects);
    template <class T>
    bool readObjects(const J3String& name, std::vector<T>* out) const;
    /// @}

    /// Add a native method to the class that bindClass() makes next.
    void addMethod(const J3String& name, FuncByLua function);

    /// Make a class of the methods added: a metatable that is its own `__index`, in the registry under
    /// @p metatableName and as the global @p globalName. The list of methods is empty afterwards.
    void bindClass(const J3String& metatableName, const J3String& globalName);

    /// Let each operation run at most about this many Lua instructions; 0, as at first, is no limit. More is an error
    /// like any other, which the script cannot catch and go on. The script loses debug.sethook. Time spent within one
    /// library function, such as a pattern match, does not count.
    /// @return false for a state of someone else's
    bool setInstructionLimit(uint64 instructions);

    /// Let the state have at most this many bytes; 0, as at first, is no limit. More is an error like any other.
    /// @return false for a state of someone else's
    bool setMemoryLimit(uint64 bytes);

private:
    static int callGuarded(lua_State* L, FuncByLua function);
    K7SAL_LOCAL bool open();
    K7SAL_LOCAL bool openLibraries();
    K7SAL_LOCAL bool startExtras();
    K7SAL_LOCAL bool load(const char* path, const char* text, std::size_t size);

    /// Whether the range is there. @return the index at which a walk over it ends
    [[nodiscard]] static uint32 walkEnd(uint32 length, uint32 start, uint32 count);

    /// The length that a vector may take from the table entered; 0 when it pretends to hold more than it does.
    [[nodiscard]] uint32 lengthHeld() const;

    std::vector<LuaBindFuncInfo> _bindFuncs;
};

template <class T>
bool K7LuaState::setArray(const T* data, uint32 count)
{
    for (uint32 i = 0; data && i < count; ++i) {
        pushValue(&data[i]);
        setTableItem(i);
    }
    return true;
}

template <class T>
bool K7LuaState::getArray(T* out, uint32 start, uint32 count) const
{
    const uint32 end = walkEnd(K7LuaStack::getTableLength(), start, count);
    for (uint32 i = start; out && i < end; ++i) {
        getTableItem(i);
        getValue(&out[i]);
    }
    return true;
}

template <class T>
bool K7LuaState::writeObjectArray(const J3String& name, const T* data, uint32 count)
{
    addPath(name);
    if (!pathInto(name))
        return true;
    setArray(data, count);
    pathOut();
    return true;
}

template <class T>
bool K7LuaState::readObjectArray(const J3String& name, T* out, uint32 start, uint32 count) const
{
    if (!pathInto(name))
        return true;
    try {
        getArray(out, start, count);
    } catch (const std::exception&) {
        return false;
    }
    pathOut();
    return true;
}

template <class T>
bool K7LuaState::writeObjects(const J3String& name, const std::vector<T>& objects)
{
    addPath(name);
    if (!pathInto(name))
        return true;
    uint32 i = 0;
    for (const auto& object : objects) {
        const std::conditional_t<std::same_as<T, bool>, bool, const T&> element = object;
        pushValue(&element);
        setTableItem(i++);
    }
    pathOut();
    return true;
}

template <class T>
bool K7LuaState::readObjects(const J3String& name, std::vector<T>* out) const
{
    if (!pathInto(name))
        return false;
    const uint32 length = lengthHeld();
    bool isRead = false;
    try {
        if (length > 0 && out) {
            out->resize(length);
            for (uint32 i = 0; i < length; ++i) {
                getTableItem(i);
                if constexpr (std::same_as<T, bool>) {
                    bool element = (*out)[i];
                    getValue(&element);
                    (*out)[i] = element;
                } else {
                    getValue(&(*out)[i]);
                }
            }
            isRead = true;
        }
    } catch (const std::exception&) { // no memory for that many
    }
    pathOut();
    return isRead;
}

/// A message handler that adds a traceback to the error: for callers that install one. It passes 2 and the message to
/// debug.traceback, in this order. @return 1
K7SAL_API int luaErrorFunction(lua_State* L);

} // namespace Kivo
