# What is installed and where, in three components: runtime, development and documentation. Everything can be moved
# afterwards: the package files find their way from where they stand.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/qx)

install(TARGETS qx qx_reproducible EXPORT qxTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  FILE_SET HEADERS COMPONENT development)

install(EXPORT qxTargets NAMESPACE qx:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/qxConfig.cmake.in ${PROJECT_BINARY_DIR}/qxConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxConfig.cmake ${PROJECT_BINARY_DIR}/qxConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

# pkg-config: folders below the prefix, or absolute where they were given so.
set(pc_libdir "\${prefix}")
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_libdir "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
file(RELATIVE_PATH pc_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/qx.pc.in ${PROJECT_BINARY_DIR}/qx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Printers for debuggers. gdb loads the first by itself where it trusts the folder, otherwise it is sourced.
if(BUILD_SHARED_LIBS)
  install(FILES debugger/qx_gdb.py RENAME libqx.so.${PROJECT_VERSION}-gdb.py COMPONENT development
          DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
endif()
install(FILES debugger/qx.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/qx COMPONENT development)

# The pages, and the reference where script/docs has made it.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT documentation FILES_MATCHING PATTERN "*.md"
        PATTERN "*.png" PATTERN "*.svg")
