# The rooms of the library, as rooms.txt lists them: a static library each, linked to just the rooms
# that it knows.

set(QORIX_ROOMS)  # lowest first
file(STRINGS ${PROJECT_SOURCE_DIR}/rooms.txt lines REGEX "^[^#]")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([^:]*):?(.*)$" unused "${line}")
  list(APPEND QORIX_ROOMS ${CMAKE_MATCH_1})
  separate_arguments(knows UNIX_COMMAND "${CMAKE_MATCH_2}")
  set(QORIX_KNOWS_${CMAKE_MATCH_1} ${knows})
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/rooms.txt)

# The target of a room: qorix-room-platform-linux for platform/linux.
function(qorix_room_target result room)
  string(REPLACE / - name ${room})
  set(${result} qorix-room-${name} PARENT_SCOPE)
endfunction()

# qorix_room(NAME SOURCES file... [LIBRARIES library...])
function(qorix_room room)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  qorix_room_target(target ${room})
  set(below)
  foreach(known IN LISTS QORIX_KNOWS_${room})
    qorix_room_target(knownTarget ${known})
    list(APPEND below ${knownTarget})
  endforeach()

  add_library(${target} STATIC ${arg_SOURCES})
  # What lies outside of include/ is for the rooms, the tests and the tools.
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PUBLIC ${below} PRIVATE ${arg_LIBRARIES})
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    QORIX_LIBRARIES "${arg_LIBRARIES}")
endfunction()

# Links a module of the room alone and what it knows: the linker refuses a call to any other room.
function(qorix_check_calls_of_room room)
  qorix_room_target(target ${room})
  add_library(${target}-alone MODULE $<TARGET_OBJECTS:${target}>)
  target_link_libraries(${target}-alone PRIVATE $<TARGET_PROPERTY:${target},LINK_LIBRARIES>)
  target_link_options(${target}-alone PRIVATE -Wl,-z,defs)
  set_target_properties(${target}-alone PROPERTIES
    LINKER_LANGUAGE CXX LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/rooms)
endfunction()
