# Include-only targets that several rooms link.

find_package(Threads REQUIRED)

# The contracts: what every room may include.
add_library(imsdk_contracts INTERFACE)
target_include_directories(imsdk_contracts INTERFACE
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:include>")
target_compile_features(imsdk_contracts INTERFACE cxx_std_20)

# RapidJSON is headers only. A folder that holds nothing else keeps the rest of the machine's
# headers away from the cross compiler.
find_path(IMSDK_RAPIDJSON_ROOT rapidjson/document.h PATHS /usr/include REQUIRED NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(IMSDK_RAPIDJSON_ROOT)
set(rapidjsonOnly "${CMAKE_BINARY_DIR}/rapidjson-only")
file(MAKE_DIRECTORY "${rapidjsonOnly}")
file(CREATE_LINK "${IMSDK_RAPIDJSON_ROOT}/rapidjson" "${rapidjsonOnly}/rapidjson"
     COPY_ON_ERROR SYMBOLIC)
add_library(rapidjson INTERFACE)
target_include_directories(rapidjson SYSTEM INTERFACE "${rapidjsonOnly}")
