# Run by cpack on the staged files: adds what Debian requires of a package.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})

# string(TIMESTAMP) uses SOURCE_DATE_EPOCH where it is set.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) UNRELEASED; urgency=medium

  * See /usr/share/doc/mod_p3dgrid/CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
file(READ ${CMAKE_CURRENT_LIST_DIR}/../LICENSE license)
file(WRITE ${documents}/copyright "${CPACK_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION}\n\n${license}")

execute_process(COMMAND gzip -9n ${documents}/changelog ${share}/man/man1/p3dgrid.1
                COMMAND_ERROR_IS_FATAL ANY)
# Debugging information is most of the size of the library, and linking does not need it.
file(GLOB_RECURSE objects ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/*.a
     ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/*.o)
execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${objects}
                COMMAND_ERROR_IS_FATAL ANY)
