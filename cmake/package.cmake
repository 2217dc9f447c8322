# Debian packages of command, library and documents, of the Python package, and of the command for
# MPI: run cpack in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME p3dgrid)
set(CPACK_PACKAGE_VENDOR "the mod_p3dgrid authors")
# Distributors set their address: -DCPACK_PACKAGE_CONTACT='NAME <ADDRESS>'.
set(CPACK_PACKAGE_CONTACT "mod_p3dgrid authors <authors>" CACHE STRING
    "Maintainer of the Debian package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # would precede each of the descriptions
set(CPACK_DEBIAN_UNSPECIFIED_DESCRIPTION
    "PLOT3D grids and flow solutions: convert, check, draw
Command and C++ library that read and write multi-block structured grids in
the PLOT3D layout and the restart files (flow solutions) that belong to them.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Text in the pictures needs some font.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS fonts-dejavu-core)
# The Python package and the command for MPI are Debian packages of their own. Everything else is in
# the unnamed component.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME p3dgrid)
if(P3DGRID_PYTHON_DEPENDS)
  list(APPEND CPACK_COMPONENTS_ALL python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-p3dgrid)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${P3DGRID_PYTHON_DEPENDS}")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS
      "python3-distributed, python3-matplotlib, python3-vtk9")
  set(CPACK_DEBIAN_PYTHON_DESCRIPTION
      "PLOT3D grids and flow solutions as numpy arrays
Python package that reads, writes, maps and checks multi-block structured grids
in the PLOT3D layout and the restart files (flow solutions) that belong to them.")
endif()
if(TARGET p3dgrid-mpi)
  list(APPEND CPACK_COMPONENTS_ALL mpi)
  set(CPACK_DEBIAN_MPI_PACKAGE_NAME p3dgrid-mpi)
  set(CPACK_DEBIAN_MPI_DESCRIPTION
      "PLOT3D grids and flow solutions: convert with MPI
Command that describes and converts multi-block structured grids in the PLOT3D
layout and their restart files, with processes that share a file.")
endif()
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
include(CPack)
