# Removes what the last installation of this build folder put in place.
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/cmake/QXUninstall.cmake
                  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} COMMENT "Removing the installed files")
