# Builds the sources of HOST in HOST_BUILD against the copy installed in PREFIX with what pkg-config
# tells of it, and runs them.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${HOST_BUILD})
file(MAKE_DIRECTORY ${HOST_BUILD})
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})  # for a build of shared libraries
separate_arguments(CXX_FLAGS UNIX_COMMAND "${CXX_FLAGS}")

function(build_host program sources)
  run(${PKG_CONFIG} --cflags --libs ${ARGN})
  separate_arguments(flags UNIX_COMMAND "${OUTPUT}")
  list(TRANSFORM sources PREPEND ${HOST}/)
  run(${CXX} ${CXX_FLAGS} ${sources} ${flags} -o ${HOST_BUILD}/${program})
endfunction()

run(${PKG_CONFIG} --exact-version=${VERSION} mod_p3dgrid-gridvars_minimal mod_p3dgrid)
build_host(host_minimal main.cpp mod_p3dgrid-gridvars_minimal mod_p3dgrid)
build_host(host_own "main.cpp;own_gridvars.cpp" mod_p3dgrid)
run_host(${HOST_BUILD}/host_minimal FALSE)
run_host(${HOST_BUILD}/host_own TRUE)
