# imsdk_rooms(<target> <PUBLIC|PRIVATE|INTERFACE> <folder>...)
#
# Lets a target include from these folders, by their names, and from no others beside them: it is
# given an include folder that holds nothing but links to them. A wrong include does not compile.
# At most once for a target.
function(imsdk_rooms target visibility)
  set(place "${CMAKE_BINARY_DIR}/rooms/${target}")
  file(REMOVE_RECURSE "${place}")  # the links, not what they lead to
  file(MAKE_DIRECTORY "${place}")
  foreach(folder IN LISTS ARGN)
    get_filename_component(folder "${folder}" ABSOLUTE)
    get_filename_component(name "${folder}" NAME)
    file(CREATE_LINK "${folder}" "${place}/${name}" SYMBOLIC)
  endforeach()
  target_include_directories(${target} ${visibility} "${place}")
endfunction()
