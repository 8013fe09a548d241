# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Fails when a source includes what lies above its layer, or the tool a private header.
# usage: cmake -D ROOT=<source tree> -P CheckLayers.cmake
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

set(top "OS|Protocol|Lua|VideoClient|Event|Sensor|Application")
forbid(src/Foundation "(Core|${top})/")
forbid(src/Core "(${top})/")
forbid(tools "[^\">]*_p\\.h")
