# Builds the reference of the C++ interface.
# usage: cmake -D HEADERS=FOLDER -D OUTPUT=FOLDER -D VERSION=NUMBER -P CppReference.cmake
#
# Ends with an error if a public entry is not documented, or a reference leads nowhere.

find_program(DOXYGEN doxygen REQUIRED)
file(REMOVE_RECURSE ${OUTPUT})
file(MAKE_DIRECTORY ${OUTPUT})
configure_file(${CMAKE_CURRENT_LIST_DIR}/../docs/Doxyfile.in ${OUTPUT}/Doxyfile @ONLY)
execute_process(COMMAND ${DOXYGEN} ${OUTPUT}/Doxyfile COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE ${OUTPUT}/Doxyfile)
