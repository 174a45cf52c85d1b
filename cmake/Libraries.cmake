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
# The functions of text/ are not exported; they have no state, so a shared libqorix-gtk3 has its own.
if(BUILD_SHARED_LIBS)
  list(APPEND gtkObjects $<TARGET_OBJECTS:qorix-room-text>)
endif()
# What has headers alone is in the objects already.
list(REMOVE_ITEM properLibraries nlohmann_json::nlohmann_json)
list(REMOVE_ITEM gtkLibraries nlohmann_json::nlohmann_json)

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

configure_file(${PROJECT_SOURCE_DIR}/cmake/exports.map.in exports.map @ONLY)

# qorix_library(TARGET INSTALLED LIBRARIES): the interface of a library that hosts link. What it uses
# has the name `installed` where the package file of an installed QORIX has looked for it.
function(qorix_library target installed libraries)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qorix-${PROJECT_VERSION_MAJOR}>)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PRIVATE "$<BUILD_INTERFACE:${libraries}>")
  set(exports ${PROJECT_BINARY_DIR}/exports.map)
  if(BUILD_SHARED_LIBS)
    target_link_options(${target} PRIVATE LINKER:--version-script=${exports})
  else()
    target_link_libraries(${target} INTERFACE $<INSTALL_INTERFACE:$<LINK_ONLY:PkgConfig::${installed}>>)
  endif()
  set_target_properties(${target} PROPERTIES
    LINK_DEPENDS ${exports}
    VERSION ${QORIX_ABI}.${PROJECT_VERSION} SOVERSION ${QORIX_ABI} LINKER_LANGUAGE CXX INSTALL_RPATH $ORIGIN)
endfunction()

add_library(qorix ${properObjects} $<TARGET_OBJECTS:qorix-build-stamp>)
add_library(qorix::qorix ALIAS qorix)
qorix_library(qorix QORIX_STATIC "${properLibraries}")

add_library(qorix-gtk3 ${gtkObjects})
add_library(qorix::gtk3 ALIAS qorix-gtk3)
# A public header includes GTK's.
target_link_libraries(qorix-gtk3 PUBLIC qorix PkgConfig::QORIX_GTK3)
qorix_library(qorix-gtk3 QORIX_GTK3_STATIC "${gtkLibraries}")

# All rooms of the library proper, with what they keep to themselves: for the tests and the tools.
add_library(qorix-inside INTERFACE)
foreach(room IN LISTS properRooms)
  qorix_room_target(target ${room})
  list(PREPEND properTargets ${target})
endforeach()
target_link_libraries(qorix-inside INTERFACE ${properTargets} qorix-build-stamp)
