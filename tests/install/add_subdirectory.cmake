# Configures a project that adds SOURCE as a folder of it, and checks that this adds neither targets
# that other projects may have as well nor anything to what the project installs.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${HOST_BUILD})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/outer -B ${HOST_BUILD} -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DP3DGRID_SOURCE=${SOURCE} -DHOST=${HOST}
    -DMOD_P3DGRID_TOOLS=${WITH_TOOLS})
run(${CMAKE_COMMAND} --install ${HOST_BUILD} --prefix ${HOST_BUILD}/prefix)
if(EXISTS ${HOST_BUILD}/prefix)
  message(FATAL_ERROR "something has been installed in ${HOST_BUILD}/prefix")
endif()
