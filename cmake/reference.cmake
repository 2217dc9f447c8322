# `p3dgrid_docs`: the reference pages of the public headers, in build/reference/, where doxygen is found.
find_program(MOD_P3DGRID_DOXYGEN doxygen)
mark_as_advanced(MOD_P3DGRID_DOXYGEN)
set(reference_folder ${PROJECT_BINARY_DIR}/reference)
configure_file(docs/Doxyfile.in Doxyfile @ONLY)
if(MOD_P3DGRID_DOXYGEN)
  # Emptied first: doxygen leaves the pages of what is there no more.
  add_custom_target(p3dgrid_docs
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${reference_folder}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${reference_folder}
    COMMAND ${MOD_P3DGRID_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMAND ${CMAKE_COMMAND} -E echo "Begin with ${reference_folder}/index.html"
    VERBATIM)
endif()
