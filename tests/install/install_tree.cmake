# Installs the build tree BUILD_DIR to PREFIX, which is emptied before, and checks that every public
# header below SOURCE_INCLUDE has come along.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${PREFIX} ${PREFIX}.installed)
# Installed to one place and moved to another: nothing may depend on where it was first.
set(config_option "")
if(CONFIG)
  set(config_option --config ${CONFIG})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}.installed ${config_option})
file(RENAME ${PREFIX}.installed ${PREFIX})
file(GLOB_RECURSE headers RELATIVE ${SOURCE_INCLUDE} ${SOURCE_INCLUDE}/*)
file(GLOB_RECURSE installed RELATIVE ${PREFIX}/${INCLUDEDIR}/mod_p3dgrid
     ${PREFIX}/${INCLUDEDIR}/mod_p3dgrid/*)
if(NOT headers STREQUAL installed)
  message(FATAL_ERROR "installed headers: ${installed}\npublic headers: ${headers}")
endif()
