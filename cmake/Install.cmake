# What `cmake --install` puts where, by component: runtime, development,
# introspection, tools, documentation.

include(CMakePackageConfigHelpers)

# Folders are relative to the prefix; one of the system's may be absolute.
set(headerFolder ${CMAKE_INSTALL_INCLUDEDIR}/qorix-${PROJECT_VERSION_MAJOR})
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/qorix)
set(pkgConfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS qorix qorix-gtk3 EXPORT qorix
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(TARGETS qorix-webprocess
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/qorix-gtk3-${QORIX_ABI} COMPONENT runtime)

# Everything in include/ is for hosts, nothing else is.
install(DIRECTORY include/qorix DESTINATION ${headerFolder} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# What static libraries use and do not bring; shared ones do. By their pkg-config names.
set(QORIX_REQUIRES expat libcrypto liburiparser)
set(QORIX_GTK3_REQUIRES glib-2.0 libcurl sqlite3 webkit2gtk-4.1 x11 zlib)

# For CMake: find_package(qorix CONFIG).
set_target_properties(qorix-gtk3 PROPERTIES EXPORT_NAME gtk3)
install(EXPORT qorix NAMESPACE qorix:: FILE qorix-targets.cmake
  DESTINATION ${packageFolder} COMPONENT development)
configure_package_config_file(cmake/qorix-config.cmake.in qorix-config.cmake
  INSTALL_DESTINATION ${packageFolder} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(qorix-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qorix-config.cmake ${PROJECT_BINARY_DIR}/qorix-config-version.cmake
  DESTINATION ${packageFolder} COMPONENT development)

# For everything else: pkg-config. Paths are relative to the file, so that the whole can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE prefixFromPkgConfig)
cmake_path(APPEND headersOfPkgConfig \${prefix} ${headerFolder})
cmake_path(APPEND librariesOfPkgConfig \${prefix} ${CMAKE_INSTALL_LIBDIR})

# install_package_file(NAME PACKAGE...): with what else hosts of a static library of this name link.
function(install_package_file name)
  set(requires)
  set(runtime)
  if(NOT BUILD_SHARED_LIBS)
    list(JOIN ARGN " " requires)
    set(runtime " -lstdc++ -lm")
  endif()
  configure_file(cmake/${name}.pc.in ${name}-2.0.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}-2.0.pc DESTINATION ${pkgConfigFolder} COMPONENT development)
endfunction()
install_package_file(qorix ${QORIX_REQUIRES})
install_package_file(qorix-gtk3 ${QORIX_GTK3_REQUIRES})

# For other languages.
if(TARGET qorix-gir)
  install(FILES ${PROJECT_BINARY_DIR}/introspection/Qorix-2.0.typelib
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/girepository-1.0 COMPONENT introspection)
  install(FILES ${PROJECT_BINARY_DIR}/introspection/Qorix-2.0.gir
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gir-1.0 COMPONENT introspection)
  install(FILES ${PROJECT_BINARY_DIR}/introspection/qorix-gtk3-2.0.vapi
                ${PROJECT_BINARY_DIR}/introspection/qorix-gtk3-2.0.deps
    DESTINATION ${CMAKE_INSTALL_DATADIR}/vala/vapi COMPONENT introspection)
endif()

if(QORIX_BUILD_TOOLS)
  install(DIRECTORY docs/schema DESTINATION ${CMAKE_INSTALL_DATADIR}/qorix COMPONENT tools)
  install(DIRECTORY tools/completions/bash/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(DIRECTORY tools/completions/zsh/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
  install(DIRECTORY tools/completions/fish/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
  foreach(tool adcheck preview sign)
    install(TARGETS qorix-${tool} RUNTIME COMPONENT tools)
    install(FILES tools/${tool}/qorix-${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  endforeach()
endif()

install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN Doxyfile.in EXCLUDE PATTERN c-interface EXCLUDE)
