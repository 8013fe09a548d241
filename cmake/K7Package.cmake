# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
# What lets another CMake project find the installed libraries: find_package(K7SAL), then Kivo::K7SAL.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/K7SAL")
configure_package_config_file(
    cmake/K7SALConfig.cmake.in "${PROJECT_BINARY_DIR}/K7SALConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/K7SALConfigVersion.cmake" COMPATIBILITY SameMajorVersion)

install(EXPORT K7SALTargets NAMESPACE Kivo:: DESTINATION "${package_dir}")
install(
    FILES "${PROJECT_BINARY_DIR}/K7SALConfig.cmake" "${PROJECT_BINARY_DIR}/K7SALConfigVersion.cmake"
    DESTINATION "${package_dir}")
