# Builds the hosts in HOST in HOST_BUILD against the copy installed in PREFIX, with the flags of
# pkg-config and as a CMake package, and runs them. The command lines are those of docs/fortran.md.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${HOST_BUILD})
set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})  # for a build of shared libraries

run(${CMAKE_COMMAND} -S ${HOST} -B ${HOST_BUILD}/cmake -G ${GENERATOR}
    -DCMAKE_Fortran_COMPILER=${FORTRAN} -DCMAKE_PREFIX_PATH=${PREFIX})
run(${CMAKE_COMMAND} --build ${HOST_BUILD}/cmake)
run_host(${HOST_BUILD}/cmake/host_minimal FALSE)
run_host(${HOST_BUILD}/cmake/host_own TRUE)

if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
  foreach(variable fortran_source fortran_gridvars_minimal)
    run(${PKG_CONFIG} --variable=${variable} mod_p3dgrid)
    string(STRIP "${OUTPUT}" ${variable})
  endforeach()
  run(${PKG_CONFIG} --libs mod_p3dgrid)
  separate_arguments(libs UNIX_COMMAND "${OUTPUT}")
  foreach(program minimal own)
    set(gridvars ${HOST}/own_gridvars.f90)
    if(program STREQUAL minimal)
      set(gridvars ${fortran_gridvars_minimal})
    endif()
    file(MAKE_DIRECTORY ${HOST_BUILD}/${program})
    run(${CMAKE_COMMAND} -E chdir ${HOST_BUILD}/${program} ${FORTRAN} ${gridvars} ${fortran_source}
        ${HOST}/main.f90 ${libs} -o host)
  endforeach()
  run_host(${HOST_BUILD}/minimal/host FALSE)
  run_host(${HOST_BUILD}/own/host TRUE)
endif()
