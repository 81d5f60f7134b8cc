# find_package(imsdkbridge) gives these targets:
#
#   imsdkbridge::imsdkbridge  the contracts: the include folder and C++20
#   imsdkbridge::kexbase      loading libraries, threads, texts, JSON; static
#   imsdkbridge::kexcore      the component registry of the process; shared
#   imsdkbridge::kexnet       escapes of URLs; static
#   imsdkbridge::module       the bridge library. It is loaded from its file and not linked:
#                             $<TARGET_FILE:imsdkbridge::module>, $<TARGET_FILE_NAME:…>, or the
#                             target's property LOCATION.

include(CMakeFindDependencyMacro)
find_dependency(Threads)
if(NOT WIN32)
  find_dependency(OpenSSL COMPONENTS Crypto)
  find_dependency(Iconv)
endif()
include("${CMAKE_CURRENT_LIST_DIR}/imsdkbridge-targets.cmake")
