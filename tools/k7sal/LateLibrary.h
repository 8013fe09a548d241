// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Functions of libraries that few commands need, and that would make every start slow.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include <dlfcn.h>

namespace K7Tool {

/// A function of a shared library, which is loaded when it is called first.
/// @throws std::runtime_error when the library or the function is not there
template <class Function>
class LateFunction {
public:
    constexpr LateFunction(const char* library, const char* name) : _library(library), _name(name) {}

    template <class... Arguments>
    decltype(auto) operator()(Arguments&&... arguments) const
    {
        if (!_function)
            _function = find();
        return _function(std::forward<Arguments>(arguments)...);
    }

private:
    Function* find() const
    {
        void* const library = ::dlopen(_library, RTLD_NOW);
        void* const symbol = library ? ::dlsym(library, _name) : nullptr;
        if (!symbol)
            throw std::runtime_error(std::string(_library) + " cannot be used: " + ::dlerror());
        return reinterpret_cast<Function*>(symbol); // as dlsym(3) has it
    }

    const char* _library;
    const char* _name;
    mutable Function* _function = nullptr;
};

} // namespace K7Tool
