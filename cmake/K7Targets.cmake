# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# How every target of the project is compiled and linked, in one place.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Warnings, hardening and sanitizers are the project's own business: nothing of it reaches a user's targets.
# Each layer is included from a folder of its own that holds links to what it owns below src/, so that an include that
# points up a layer does not compile.
set(K7_LAYERS "${PROJECT_BINARY_DIR}/layers")
function(k7_layer name)
    file(MAKE_DIRECTORY "${K7_LAYERS}/${name}")
    foreach(entry IN LISTS ARGN)
        file(CREATE_LINK "${PROJECT_SOURCE_DIR}/src/${entry}" "${K7_LAYERS}/${name}/${entry}" SYMBOLIC)
    endforeach()
endfunction()

# Below all layers: private headers that every target of the project may use, and no user ever sees.
k7_layer(Base Base)

function(k7_compile_options target)
    target_include_directories(${target} PRIVATE "${K7_LAYERS}/Base")
    target_compile_definitions(${target} PRIVATE K7SAL_PROJECT)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
        $<$<BOOL:${K7SAL_WERROR}>:-Werror>
        -fstack-protector-strong)
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
    if(NOT (K7SAL_SANITIZERS AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)) # whose runtime is in the programs alone
        target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
    if(K7SAL_SANITIZERS)
        target_compile_options(${target} PRIVATE
            -fsanitize=${K7SAL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${K7SAL_SANITIZERS})
    else()
        target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    endif()
endfunction()

# k7_library(<name> FOLDERS <what it owns of src/> HEADERS <installed headers> SOURCES <sources> [PARSERS <sources>]
#            [PUBLIC <libraries>] [PRIVATE <libraries>])
# declares one shared library of the project, known to its users as Kivo::<name>. Its parsers of outside text are pure
# functions in an object library <name>Parsers, which tests and fuzz targets link too.
function(k7_library name)
    cmake_parse_arguments(arg "" "" "FOLDERS;HEADERS;SOURCES;PARSERS;PUBLIC;PRIVATE" ${ARGN})
    set(version_script "${CMAKE_CURRENT_SOURCE_DIR}/${name}.map")
    k7_layer(${name} ${arg_FOLDERS})
    list(TRANSFORM arg_HEADERS PREPEND "${K7_LAYERS}/${name}/")

    add_library(${name} SHARED ${arg_SOURCES})
    add_library(Kivo::${name} ALIAS ${name})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${K7_LAYERS}/${name}" FILES ${arg_HEADERS})
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

    if(arg_PARSERS)
        add_library(${name}Parsers OBJECT ${arg_PARSERS})
        target_include_directories(${name}Parsers PUBLIC "${K7_LAYERS}/${name}")
        target_link_libraries(${name}Parsers PUBLIC ${arg_PUBLIC})
        target_compile_features(${name}Parsers PUBLIC cxx_std_20)
        set_target_properties(${name}Parsers PROPERTIES
            CXX_VISIBILITY_PRESET hidden
            VISIBILITY_INLINES_HIDDEN ON
            INTERPROCEDURAL_OPTIMIZATION ${K7SAL_LTO})
        k7_compile_options(${name}Parsers)
        target_sources(${name} PRIVATE $<TARGET_OBJECTS:${name}Parsers>)
        set(parsers $<TARGET_OBJECTS:${name}Parsers>)
    endif()

    # The same objects for a program of the project that must start wherever it is put; never installed.
    add_library(${name}Static STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:${name}> ${parsers})
    set_target_properties(${name}Static PROPERTIES
        LINKER_LANGUAGE CXX
        INTERPROCEDURAL_OPTIMIZATION ${K7SAL_LTO})
    target_include_directories(${name}Static INTERFACE "${K7_LAYERS}/${name}")
    target_compile_features(${name}Static INTERFACE cxx_std_20)
    foreach(dependency IN LISTS arg_PUBLIC arg_PRIVATE)
        if(TARGET ${dependency}Static)
            set(dependency ${dependency}Static)
        endif()
        target_link_libraries(${name}Static INTERFACE ${dependency})
    endforeach()
endfunction()

# k7_executable(<name> SOURCES <sources> LIBRARIES <libraries>)
function(k7_executable name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    k7_compile_options(${name})
endfunction()
