# How every file of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# -O2 is what ships: -O3 makes GCC 12 warn of values that are not uninitialised.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

# Libraries hide everything that is not exported on purpose.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# One folder holds every program and library, so that they find each other at run time.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
if(WIN32)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")  # imsdkbridge.dll, not libimsdkbridge.dll
  set(CMAKE_SHARED_MODULE_PREFIX "")
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
else()
  set(CMAKE_BUILD_RPATH "$ORIGIN")
  set(CMAKE_INSTALL_RPATH "$ORIGIN")
endif()

find_program(IMSDK_CCACHE ccache)
mark_as_advanced(IMSDK_CCACHE)
if(IMSDK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${IMSDK_CCACHE}")
endif()

add_library(imsdk_warnings INTERFACE)
target_compile_options(imsdk_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Werror)

if(IMSDK_FUZZ)
  # libFuzzer follows which ways an input takes. RapidJSON adds zero to null pointers, which only
  # Clang minds.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(IMSDK_SANITIZE)
  add_compile_options(-fsanitize=${IMSDK_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${IMSDK_SANITIZE})
  if(IMSDK_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
    if(IMSDK_FUZZ)
      add_compile_options(-fno-sanitize=pointer-overflow)
    endif()
  endif()
endif()
