set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

option(MIRTA_WERROR "Treat warnings as errors" ON)
set(MIRTA_SANITIZE "" CACHE STRING "Value of -fsanitize=, empty for none")

# Where the controllers are. The ports are fixed; the hosts are values of the site.
set(MIRTA_DRIVE_HOST "127.0.0.1" CACHE STRING "Address of the motion controller CML75")
set(MIRTA_KVS_HOST "127.0.0.1" CACHE STRING "Address of the vacuum controller KVS")
set(MIRTA_KVK_HOST "127.0.0.1" CACHE STRING "Address of the chamber controller KVK")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# Some seventy programs are linked; the quicker linker takes a quarter of the time.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=gold MIRTA_HAS_GOLD)
if(MIRTA_HAS_GOLD)
  add_link_options(-fuse-ld=gold)
endif()

# Assertions guard the machine: they end the process in every build type.
add_compile_definitions(QT_FORCE_ASSERTS QT_NO_CAST_TO_ASCII)
add_compile_definitions(QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
string(REPLACE "-DNDEBUG" "" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
string(REPLACE "-DNDEBUG" "" CMAKE_CXX_FLAGS_RELWITHDEBINFO "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}")
string(REPLACE "-g" "-g1" CMAKE_CXX_FLAGS_RELWITHDEBINFO "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual)
if(MIRTA_WERROR)
  add_compile_options(-Werror)
endif()

if(MIRTA_SANITIZE)
  add_compile_options(-fsanitize=${MIRTA_SANITIZE} -fno-omit-frame-pointer -O1)
  add_link_options(-fsanitize=${MIRTA_SANITIZE})
  if(MIRTA_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# A file that is new among the sources of a library reaches moc in the same build: their list is not among what
# Ninja watches, so a list that has changed takes away the mark that moc has been there.
function(mirta_watch_sources target)
  get_target_property(sources ${target} SOURCES)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}-sources.txt)
  set(before "")
  if(EXISTS ${list})
    file(READ ${list} before)
  endif()
  if(NOT before STREQUAL sources)
    file(WRITE ${list} "${sources}")
    file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp)
  endif()
endfunction()
