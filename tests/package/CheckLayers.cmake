# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Fails when a layer sees what lies above it, or a library or the tool includes another library's private headers.
# usage: cmake -D ROOT=<source tree> -D LAYERS=<include roots> -D COMPILER=<c++> -D SCRATCH=<folder> -P CheckLayers.cmake
file(MAKE_DIRECTORY "${SCRATCH}")

function(compiles result header)
    file(WRITE "${SCRATCH}/include.cpp" "#include \"${header}\"\n")
    list(TRANSFORM ARGN PREPEND "-I${LAYERS}/" OUTPUT_VARIABLE roots)
    execute_process(
        COMMAND "${COMPILER}" -std=c++20 -fsyntax-only ${roots} "${SCRATCH}/include.cpp"
        RESULT_VARIABLE code ERROR_VARIABLE errors)
    if(code EQUAL 0)
        set(${result} ON PARENT_SCOPE)
    elseif(errors MATCHES "${header}: No such file|'${header}' file not found")
        set(${result} OFF PARENT_SCOPE)
    else()
        message(SEND_ERROR "${errors}")
    endif()
endfunction()

# A layer's own header compiles with what the layer sees; a header from above is not found.
function(check own above)
    compiles(seen "${own}" ${ARGN})
    if(NOT seen)
        message(SEND_ERROR "${own} is not found in its own layer")
    endif()
    compiles(seen "${above}" ${ARGN})
    if(seen)
        message(SEND_ERROR "${above} is seen from below: ${ARGN}")
    endif()
endfunction()

check(Foundation/J3String.h Core/K7Version.h J3Foundation)
check(Core/K7Version.h OS/System/OS.h J3Foundation K7Core)
check(OS/System/OS.h Inventory/Memory.h J3Foundation K7Core K7SAL)
check(Inventory/Memory.h Command.h J3Foundation K7Core K7SAL K7Inventory)

function(forbid folder pattern)
    file(GLOB_RECURSE sources "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    if(NOT sources)
        message(FATAL_ERROR "no sources in ${folder}")
    endif()
    foreach(source IN LISTS sources)
        file(STRINGS "${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]${pattern}")
        foreach(include IN LISTS includes)
            message(SEND_ERROR "${source}: ${include}")
        endforeach()
    endforeach()
endfunction()

forbid(src/Inventory "(Foundation|Core|OS|Protocol)/[^\">]*_p\\.h")
forbid(tools "(Foundation|Core|OS|Protocol|Inventory)/[^\">]*_p\\.h")
