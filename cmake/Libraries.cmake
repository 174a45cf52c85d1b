# What is shipped: libqorix, without a toolkit, from the rooms of the library proper, and
# libqorix-gtk3 from those of the GTK 3 desktop. Both offer the headers in include/ and no others.

set(platformRooms platform/linux platform/gtk platform/gtk/glib)
set(properRooms ${QORIX_ROOMS})
list(REMOVE_ITEM properRooms ${platformRooms})

# qorix_objects(OBJECTS LIBRARIES room...): the objects of the rooms and the libraries they use.
function(qorix_objects objects libraries)
  set(theirObjects)
  set(theirLibraries)
  foreach(room IN LISTS ARGN)
    qorix_room_target(target ${room})
    list(APPEND theirObjects $<TARGET_OBJECTS:${target}>)
    get_target_property(used ${target} QORIX_LIBRARIES)
    list(APPEND theirLibraries ${used})
  endforeach()
  set(${objects} ${theirObjects} PARENT_SCOPE)
  set(${libraries} ${theirLibraries} PARENT_SCOPE)
endfunction()

qorix_objects(properObjects properLibraries ${properRooms})
qorix_objects(gtkObjects gtkLibraries ${platformRooms})

# The time of the build: stamped anew when anything else of the library was compiled anew, and when
# the build is configured for another time or another way of linking.
set(buildStamp ${PROJECT_BINARY_DIR}/BuildStamp.cpp)
string(TOUPPER "${CMAKE_BUILD_TYPE}" configuration)
set(linkedWith "${CMAKE_SHARED_LINKER_FLAGS} ${CMAKE_SHARED_LINKER_FLAGS_${configuration}}")
add_custom_command(OUTPUT ${buildStamp}
  COMMAND ${CMAKE_COMMAND} -D OUTPUT=${buildStamp}
          -D "CONFIGURED_FOR=$ENV{SOURCE_DATE_EPOCH} ${linkedWith}"
          -P ${PROJECT_SOURCE_DIR}/cmake/BuildStamp.cmake
  DEPENDS ${PROJECT_SOURCE_DIR}/cmake/BuildStamp.cmake ${properObjects}
  VERBATIM
)
add_library(qorix-build-stamp STATIC ${buildStamp})
target_include_directories(qorix-build-stamp PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(qorix-build-stamp PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden UNITY_BUILD OFF)

# The interface of a library that hosts link. <qorix/Export.h> says why its soname has both numbers
# of the version.
function(qorix_library target)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qorix-${PROJECT_VERSION_MAJOR}>)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION} LINKER_LANGUAGE CXX)
endfunction()

add_library(qorix ${properObjects} $<TARGET_OBJECTS:qorix-build-stamp>)
add_library(qorix::qorix ALIAS qorix)
target_link_libraries(qorix PRIVATE ${properLibraries})
qorix_library(qorix)

add_library(qorix-gtk3 ${gtkObjects})
add_library(qorix::gtk3 ALIAS qorix-gtk3)
# The functions of text/ are not exported; they have no state, so this library has its own.
target_link_libraries(qorix-gtk3 PUBLIC qorix PRIVATE qorix-room-text ${gtkLibraries})
qorix_library(qorix-gtk3)

# All rooms of the library proper, with what they keep to themselves: for the tests and the tools.
add_library(qorix-inside INTERFACE)
foreach(room IN LISTS properRooms)
  qorix_room_target(target ${room})
  list(PREPEND properTargets ${target})
endforeach()
target_link_libraries(qorix-inside INTERFACE ${properTargets} qorix-build-stamp)
