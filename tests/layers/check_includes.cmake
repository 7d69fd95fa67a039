# Fails when a folder of src/ includes a header of a folder on the same floor or above it, or
# when Qt is included outside the desktop layers. Run by CTest:
#   cmake -DSOURCE_DIR=<root of the clone> -P check_includes.cmake
# IN_LIST below needs the policy a script run does not set by itself.
cmake_policy(SET CMP0057 NEW)
# The floors, lowest first; folders on one floor do not include each other.
set(floors
  "text"
  "platform"
  "core"
  "store"
  "format"
  "persist"
  "formula"
  "functions"
  "table"
  "exchange;search;mail;objects"
  "document;undo"
  "print;views")
set(qt_folders print views)

set(rank 0)
foreach(floor IN LISTS floors)
  string(REPLACE ";" " " floor_text "${floor}")
  separate_arguments(folders UNIX_COMMAND "${floor_text}")
  foreach(folder IN LISTS folders)
    set(rank_${folder} ${rank})
  endforeach()
  math(EXPR rank "${rank} + 1")
endforeach()

if(NOT IS_DIRECTORY "${SOURCE_DIR}/src")
  message(FATAL_ERROR "no src/ folder under SOURCE_DIR='${SOURCE_DIR}'")
endif()
file(GLOB_RECURSE sources RELATIVE "${SOURCE_DIR}/src"
  "${SOURCE_DIR}/src/*.h" "${SOURCE_DIR}/src/*.cpp")

set(faults "")
set(checked 0)
foreach(source IN LISTS sources)
  string(REGEX MATCH "^[^/]+" folder "${source}")
  if(NOT DEFINED rank_${folder})
    string(APPEND faults "\n  src/${folder}/ has no floor: add it to tests/layers/check_includes.cmake")
    continue()
  endif()
  file(STRINGS "${SOURCE_DIR}/src/${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
  foreach(line IN LISTS includes)
    math(EXPR checked "${checked} + 1")
    if(line MATCHES "#[ \t]*include[ \t]*\"([a-z_]+)/")
      set(target "${CMAKE_MATCH_1}")
      if(target STREQUAL folder)
        continue()
      endif()
      if(NOT DEFINED rank_${target})
        string(APPEND faults "\n  src/${source}: ${line} names a folder with no floor")
      elseif(NOT rank_${target} LESS rank_${folder})
        string(APPEND faults "\n  src/${source}: ${line} reaches ${target}/, which is not below ${folder}/")
      endif()
    elseif(line MATCHES "#[ \t]*include[ \t]*<(Q[A-Za-z]*|qt[a-z]*)[/>]")
      if(NOT folder IN_LIST qt_folders)
        string(APPEND faults "\n  src/${source}: ${line} brings Qt into ${folder}/")
      endif()
    endif()
  endforeach()
endforeach()

list(LENGTH sources file_count)
if(faults)
  message(FATAL_ERROR "Includes against the layers:${faults}")
endif()
message(STATUS "layers: ${checked} includes of ${file_count} files point down")
