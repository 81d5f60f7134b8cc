# cmake -DNM=<nm> -DLIBRARY=<file> -P check_exports.cmake
# Fails unless the library's dynamic symbol table defines exactly GetKexCOMFactory.
execute_process(COMMAND "${NM}" -D --defined-only --format=posix "${LIBRARY}"
                OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${table}")
list(TRANSFORM lines REPLACE " .*" "")
if(NOT lines STREQUAL "GetKexCOMFactory")
  message(FATAL_ERROR "exported symbols: ${lines}; expected GetKexCOMFactory alone")
endif()
