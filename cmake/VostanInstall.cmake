# What `cmake --install` puts under the prefix: the library with its SONAME,
# the jars (added by java/), vostan-movie (added by tools/), and the files that
# let a build find them: a CMake package (find_package(vostan)) and vostan.pc.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(vostan PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
install(TARGETS vostan EXPORT vostanTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(_cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/vostan)
install(EXPORT vostanTargets NAMESPACE vostan:: DESTINATION ${_cmakedir})

set(VOSTAN_INSTALL_JAVADIR ${CMAKE_INSTALL_DATADIR}/java)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/install/vostanConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vostanConfig.cmake INSTALL_DESTINATION ${_cmakedir}
  PATH_VARS VOSTAN_INSTALL_JAVADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vostanConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vostanConfig.cmake ${PROJECT_BINARY_DIR}/vostanConfigVersion.cmake
  DESTINATION ${_cmakedir})

# pkg-config: the library, and the jars as variables (`pkg-config --variable=jar vostan`).
# Relative to the .pc file, so the tree works wherever it is installed.
set(VOSTAN_PC_PLATFORM linux-${CMAKE_SYSTEM_PROCESSOR})
file(RELATIVE_PATH VOSTAN_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" VOSTAN_PC_TO_PREFIX "${VOSTAN_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/install/vostan.pc.in ${PROJECT_BINARY_DIR}/vostan.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vostan.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
