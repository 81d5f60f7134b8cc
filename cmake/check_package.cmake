# cmake -DBUILD=<build> -DPLACE=<folder> -DCXX=<compiler> -DEXAMPLE=<folder> -P check_package.cmake
# Installs the package, moves it, and builds and runs the example from it, as its README says.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
  set(said "${said}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${PLACE}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PLACE}/first")
file(RENAME "${PLACE}/first" "${PLACE}/sdk")
file(COPY "${EXAMPLE}/" DESTINATION "${PLACE}/embed")
run("${CMAKE_COMMAND}" -S "${PLACE}/embed" -B "${PLACE}/build" "-DCMAKE_CXX_COMPILER=${CXX}"
    "-DCMAKE_PREFIX_PATH=${PLACE}/sdk")
run("${CMAKE_COMMAND}" --build "${PLACE}/build")
run("${PLACE}/build/embed")
if(NOT said MATCHES "event onReceiveNewMsg")
  message(FATAL_ERROR "the example said: ${said}")
endif()
