# One room of the console: a static library of the folder's sources that sees its own headers and those of the
# rooms it names, and nothing else. Include paths are not handed on, so a step to a room that is not named does
# not compile.
#   mirta_room(NAME [USES ROOM ...] [QT MODULE ...])
# QT names the modules of Qt beside Core.
function(mirta_room name)
  cmake_parse_arguments(ROOM "" "" "USES;QT" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.h *.cpp *.inc)
  set(target room_${name})

  # A changed form is compiled in the same run: the headers made from forms are not among what Ninja watches.
  set(forms "")
  foreach(source ${sources})
    file(STRINGS ${source} includes REGEX "^#include \"ui_[a-z]+\\.h\"")
    foreach(include ${includes})
      string(REGEX REPLACE ".*ui_([a-z]+).*" "${CMAKE_SOURCE_DIR}/forms/\\1.ui" form "${include}")
      set_property(SOURCE ${source} APPEND PROPERTY OBJECT_DEPENDS ${form})
      list(APPEND forms ${form})
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES forms)

  add_library(${target} STATIC ${sources} ${forms})
  mirta_watch_sources(${target})
  set_target_properties(${target} PROPERTIES AUTOUIC_SEARCH_PATHS ${CMAKE_SOURCE_DIR}/forms)
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE Qt5::Core)
  foreach(module ${ROOM_QT})
    target_link_libraries(${target} PRIVATE Qt5::${module})
  endforeach()
  foreach(used ${ROOM_USES})
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src/${used})
    target_link_libraries(${target} PRIVATE room_${used})
  endforeach()

  set_property(GLOBAL APPEND PROPERTY MIRTA_ROOMS ${name})
  set_property(GLOBAL PROPERTY MIRTA_ROOM_USES_${name} "${ROOM_USES}")
endfunction()

# Writes the rooms and what each uses, for the test that holds the build to them.
function(mirta_write_rooms)
  get_property(rooms GLOBAL PROPERTY MIRTA_ROOMS)
  set(text "set(ROOMS ${rooms})\n")
  foreach(room ${rooms})
    get_property(uses GLOBAL PROPERTY MIRTA_ROOM_USES_${room})
    string(APPEND text "set(USES_${room} ${uses})\n")
  endforeach()
  file(WRITE ${CMAKE_BINARY_DIR}/rooms.cmake "${text}")
endfunction()
