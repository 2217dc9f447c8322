# Builds the examples that have been installed in PREFIX/DOCDIR against the library beside them.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)
file(REMOVE_RECURSE ${HOST_BUILD})
run(${CMAKE_COMMAND} -S ${PREFIX}/${DOCDIR}/examples -B ${HOST_BUILD} -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DCMAKE_PREFIX_PATH=${PREFIX})
run(${CMAKE_COMMAND} --build ${HOST_BUILD})
