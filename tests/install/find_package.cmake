# Builds the host project HOST in HOST_BUILD against the copy installed in PREFIX, found as a CMake
# package, and runs it.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${HOST_BUILD})
run(${CMAKE_COMMAND} -S ${HOST} -B ${HOST_BUILD} -G ${GENERATOR} -DCMAKE_BUILD_TYPE=${HOST_CONFIG}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DCMAKE_PREFIX_PATH=${PREFIX}
    -DWANTED_VERSION=${VERSION})
file(STRINGS ${HOST_BUILD}/CMakeCache.txt found REGEX "^mod_p3dgrid_DIR:")
string(FIND "${found}" "${PREFIX}/" at)
if(at EQUAL -1)
  message(FATAL_ERROR "another copy was found: ${found}")
endif()
run(${CMAKE_COMMAND} --build ${HOST_BUILD})
run_host(${HOST_BUILD}/host_minimal FALSE)
run_host(${HOST_BUILD}/host_own TRUE)
