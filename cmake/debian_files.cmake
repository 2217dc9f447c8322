# Run by cpack on the staged files: adds what Debian requires of each package.

# string(TIMESTAMP) uses SOURCE_DATE_EPOCH where it is set.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(READ ${CMAKE_CURRENT_LIST_DIR}/../LICENSE license)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${package})
  file(WRITE ${documents}/changelog
"${package} (${CPACK_PACKAGE_VERSION}) UNRELEASED; urgency=medium

  * See /usr/share/doc/mod_p3dgrid/CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
  file(WRITE ${documents}/copyright "${package} ${CPACK_PACKAGE_VERSION}\n\n${license}")
  file(GLOB manuals ${root}/share/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${documents}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)
  # Debugging information is most of the size of the library, and linking does not need it.
  file(GLOB_RECURSE objects ${root}/*.a ${root}/*.o ${root}/*.so)
  if(objects)
    execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${objects}
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
