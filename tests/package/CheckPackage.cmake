# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# Installs a build, then builds and runs another project against what was installed.
# usage: cmake -D BUILD=<build tree> -D SCRATCH=<folder> -D CONSUMER=<source> -D VERSION=<version> -D COMPILER=<c++>
#              -D GENERATOR=<generator> -D FLAGS=<compiler flags> -P CheckPackage.cmake
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${SCRATCH}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${SCRATCH}/prefix")

file(GLOB_RECURSE headers "${SCRATCH}/prefix/include/*.h")
if(NOT headers)
    message(FATAL_ERROR "no header was installed")
endif()
foreach(header IN LISTS headers)
    file(STRINGS "${header}" leaks REGEX "^ *# *include.*(nlohmann|utf8|_p\\.h)")
    if(leaks OR header MATCHES "_p\\.h$")
        message(SEND_ERROR "private matter in the installed ${header}: ${leaks}")
    endif()
endforeach()

# What the libraries use inside is not there for their users.
run("${CMAKE_COMMAND}" --no-warn-unused-cli -S "${CONSUMER}" -B "${SCRATCH}/build" -G "${GENERATOR}"
    -D "CMAKE_PREFIX_PATH=${SCRATCH}/prefix" -D "CMAKE_CXX_COMPILER=${COMPILER}" -D "CMAKE_CXX_FLAGS=${FLAGS}"
    -D "K7SAL_EXPECTED_VERSION=${VERSION}"
    -D CMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -D CMAKE_DISABLE_FIND_PACKAGE_utf8cpp=ON)
run("${CMAKE_COMMAND}" --build "${SCRATCH}/build")
run("${SCRATCH}/build/consumer")
run("${SCRATCH}/prefix/bin/k7sal" --version)
