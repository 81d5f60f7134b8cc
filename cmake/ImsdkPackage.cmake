# What an embedding program needs, as a CMake package: `cmake --install` puts it anywhere, and
# `find_package(imsdkbridge)` finds it there.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The names of the package, inside the project too. `module` is the bridge library: programs load it
# from its file and do not link it.
function(imsdk_install_package)
  set(names imsdk_contracts:imsdkbridge kexbase:kexbase kexcore:kexcore kexnet:kexnet
      imsdkbridge:module)
  set(targets "")
  foreach(pair IN LISTS names)
    string(REGEX MATCH "(.*):(.*)" pair "${pair}")
    set_target_properties(${CMAKE_MATCH_1} PROPERTIES EXPORT_NAME ${CMAKE_MATCH_2})
    list(APPEND targets ${CMAKE_MATCH_1})
  endforeach()

  set(place lib/cmake/imsdkbridge)
  install(TARGETS ${targets} EXPORT imsdkbridge
    RUNTIME DESTINATION bin LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/" DESTINATION include)
  install(EXPORT imsdkbridge NAMESPACE imsdkbridge:: DESTINATION ${place}
    FILE imsdkbridge-targets.cmake)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/imsdkbridge-config.cmake"
    "${PROJECT_BINARY_DIR}/imsdkbridge-config.cmake" COPYONLY)
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/imsdkbridge-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/imsdkbridge-config.cmake"
    "${PROJECT_BINARY_DIR}/imsdkbridge-config-version.cmake" DESTINATION ${place})
endfunction()
