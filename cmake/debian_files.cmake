# Run by cpack on what it is about to pack: what Debian asks of a package, and an installation by
# hand does without.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})

# In an order that dpkg can read, and with the time that SOURCE_DATE_EPOCH states, if it does.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) UNRELEASED; urgency=medium

  * What has changed stands in /usr/share/doc/mod_p3dgrid/CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
file(WRITE ${documents}/copyright
"${CPACK_PACKAGE_NAME}: written by the ${CPACK_PACKAGE_VENDOR}.

Copyright (C) the ${CPACK_PACKAGE_VENDOR}
The sources state no licence.
")

execute_process(COMMAND gzip -9n ${documents}/changelog ${share}/man/man1/p3dgrid.1
                COMMAND_ERROR_IS_FATAL ANY)
# Who links the library has no use for its debugging information, which is most of its size.
file(GLOB_RECURSE objects ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/*.a
     ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/*.o)
execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${objects}
                COMMAND_ERROR_IS_FATAL ANY)
