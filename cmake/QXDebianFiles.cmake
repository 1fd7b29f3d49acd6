# Run by CPack over the staged files: what Debian wants in every package, the copyright and the changelog.
foreach(pair IN ITEMS runtime:RUNTIME development:DEVELOPMENT documentation:DOCUMENTATION)
  string(REGEX REPLACE ":.*" "" component ${pair})
  string(REGEX REPLACE ".*:" "" upper ${pair})
  set(stage ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  if(EXISTS ${stage})
    set(folder ${stage}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    file(WRITE ${folder}/copyright "QX, ${CPACK_PACKAGE_VERSION}\n\nNo license has been chosen yet: all rights are reserved.\n")
    file(WRITE ${folder}/changelog "qx (${CPACK_PACKAGE_VERSION}) unstable; urgency=low\n\n  * See CHANGELOG.md of libqx-doc.\n\n"
               " -- ${CPACK_PACKAGE_CONTACT}  Sat, 21 Nov 2026 00:00:00 +0000\n")
    execute_process(COMMAND gzip -9nf ${folder}/changelog COMMAND_ERROR_IS_FATAL ANY)
    file(CHMOD ${folder}/copyright ${folder}/changelog.gz PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endif()
endforeach()
