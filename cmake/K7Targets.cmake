# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# How every target of the project is compiled and linked, in one place.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Warnings, hardening and sanitizers are the project's own business: nothing of it reaches a user's targets.
function(k7_compile_options target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
        $<$<BOOL:${K7SAL_WERROR}>:-Werror>
        -fstack-protector-strong)
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack,-z,defs)
    if(K7SAL_SANITIZERS)
        target_compile_options(${target} PRIVATE
            -fsanitize=${K7SAL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${K7SAL_SANITIZERS})
    else()
        target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    endif()
endfunction()

# k7_library(<name> HEADERS <installed headers> SOURCES <sources> [PUBLIC <libraries>] [PRIVATE <libraries>])
# declares one shared library of the project, known to its users as Kivo::<name>.
function(k7_library name)
    cmake_parse_arguments(arg "" "" "HEADERS;SOURCES;PUBLIC;PRIVATE" ${ARGN})
    set(version_script "${CMAKE_CURRENT_SOURCE_DIR}/${name}.map")
    add_library(${name} SHARED ${arg_SOURCES})
    add_library(Kivo::${name} ALIAS ${name})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}/src" FILES ${arg_HEADERS})
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_compile_definitions(${name} PRIVATE ${name}_BUILD)
    set_target_properties(${name} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        LINK_DEPENDS "${version_script}"
        INTERPROCEDURAL_OPTIMIZATION ${K7SAL_LTO}
        INSTALL_RPATH "$ORIGIN"
        VERIFY_INTERFACE_HEADER_SETS ON)
    # Stays loaded once it is: a name look-up that was given up may still be running its code.
    target_link_options(${name} PRIVATE "LINKER:--version-script=${version_script}" LINKER:-z,nodelete)
    k7_compile_options(${name})
    install(TARGETS ${name} EXPORT K7SALTargets FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/K7SAL)
endfunction()

# k7_executable(<name> SOURCES <sources> LIBRARIES <libraries>)
function(k7_executable name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    k7_compile_options(${name})
endfunction()
