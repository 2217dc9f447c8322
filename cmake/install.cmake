# What is installed: library, headers, CMake package, pkg-config files and documents. The command's
# part stands in tools/.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mod_p3dgrid)
install(TARGETS mod_p3dgrid EXPORT mod_p3dgrid
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS p3dgrid_gridvars_minimal EXPORT mod_p3dgrid
        OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR}/mod_p3dgrid)
install(EXPORT mod_p3dgrid NAMESPACE mod_p3dgrid:: FILE mod_p3dgrid-targets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mod_p3dgrid)
configure_package_config_file(cmake/mod_p3dgrid-config.cmake.in mod_p3dgrid-config.cmake
        INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mod_p3dgrid)
write_basic_package_version_file(mod_p3dgrid-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mod_p3dgrid-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/mod_p3dgrid-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mod_p3dgrid)
file(RELATIVE_PATH pc_to_includedir
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
# Fortran compilers do not link the C++ run-time library.
set(pc_fortran_variables "")
set(pc_cxx_runtime "")
if(MOD_P3DGRID_FORTRAN)
  file(RELATIVE_PATH pc_to_datadir
       ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_DATADIR})
  set(sources "\${pcfiledir}/${pc_to_datadir}/mod_p3dgrid")
  string(APPEND pc_fortran_variables "# Sources that hosts in Fortran compile.\n"
         "fortran_source=${sources}/mod_p3dgrid.f90\n"
         "fortran_gridvars_minimal=${sources}/mod_gridvars.f90\n")
  foreach(library IN LISTS MOD_P3DGRID_CXX_RUNTIME)
    string(APPEND pc_cxx_runtime " -l${library}")
  endforeach()
endif()
# Where install(TARGETS ... OBJECTS) puts the object file of this build.
set(gridvars_minimal_object p3dgrid_gridvars_minimal/src/gridvars_minimal/gridvars_minimal.cpp.o)
if(CMAKE_BUILD_TYPE)
  string(PREPEND gridvars_minimal_object objects-${CMAKE_BUILD_TYPE}/)
else()
  string(PREPEND gridvars_minimal_object objects/)
endif()
foreach(module mod_p3dgrid mod_p3dgrid-gridvars_minimal)
  configure_file(cmake/${module}.pc.in ${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        PATTERN Doxyfile.in EXCLUDE PATTERN "*.dox" EXCLUDE)
# What the pages link to, at the same place beside them.
install(FILES tests/fuzz/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/tests/fuzz)
install(FILES examples/CMakeLists.txt examples/fortran_gridvars.f90 examples/fortran_host.f90 examples/grids.cpp
              examples/host.cpp examples/points.cpp examples/stream.cpp
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(DIRECTORY examples/mpi DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples USE_SOURCE_PERMISSIONS)
install(PROGRAMS examples/plot_tecplot.py DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
