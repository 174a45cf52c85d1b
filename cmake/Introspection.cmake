# What other languages read of the C interface, made from its header and the library, in
# build/introspection: Qorix-2.0.gir, its compiled form, and the API for Vala. And its reference.
find_program(G_IR_SCANNER g-ir-scanner REQUIRED)
find_program(G_IR_COMPILER g-ir-compiler REQUIRED)
find_program(VAPIGEN vapigen REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(package qorix-gtk3-2.0)
set(header ${PROJECT_SOURCE_DIR}/include/qorix/qorix-gtk.h)
set(folder ${PROJECT_BINARY_DIR}/introspection)
set(gir ${folder}/Qorix-2.0.gir)
set(typelib ${folder}/Qorix-2.0.typelib)
set(vapi ${folder}/${package}.vapi)
file(MAKE_DIRECTORY ${folder})

# The scanner compiles a program that asks the library for its types. An entry without the annotations
# that other languages need is an error, and so is one without a description.
add_custom_command(OUTPUT ${gir}
  COMMAND ${CMAKE_COMMAND} -E env CC=${CMAKE_C_COMPILER}
          ${G_IR_SCANNER} --quiet --warn-all --warn-error --no-libtool
          --namespace=Qorix --nsversion=2.0 --identifier-prefix=Qorix --symbol-prefix=qorix
          --include=Gtk-3.0 --pkg=gtk+-3.0 --pkg-export=${package} --c-include=qorix/qorix-gtk.h
          --library=qorix-gtk3 -L$<TARGET_FILE_DIR:qorix-gtk3> -I${PROJECT_SOURCE_DIR}/include
          --sources-top-dirs=${PROJECT_SOURCE_DIR}/include --output=${gir}.new ${header}
  COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/cmake/documented.py ${gir}.new
  COMMAND ${CMAKE_COMMAND} -E rename ${gir}.new ${gir}
  DEPENDS qorix-gtk3 ${header} ${PROJECT_SOURCE_DIR}/include/qorix/Export.h
          ${PROJECT_SOURCE_DIR}/cmake/documented.py
  WORKING_DIRECTORY ${folder}
  VERBATIM)
add_custom_target(qorix-gir ALL DEPENDS ${gir})

add_custom_command(OUTPUT ${typelib}
  COMMAND ${G_IR_COMPILER} --output=${typelib} ${gir}
  DEPENDS qorix-gir ${gir}
  VERBATIM)
add_custom_target(qorix-typelib ALL DEPENDS ${typelib})

add_custom_command(OUTPUT ${vapi}
  COMMAND ${VAPIGEN} --quiet --library=${package} --pkg=gtk+-3.0 --directory=${folder} ${gir}
  DEPENDS qorix-gir ${gir}
  VERBATIM)
file(WRITE ${folder}/${package}.deps gtk+-3.0\n)
add_custom_target(qorix-vapi ALL DEPENDS ${vapi})

# The reference of the C interface, in build/docs/c. A link that leads nowhere is an error, too.
set(reference ${PROJECT_SOURCE_DIR}/docs/c-interface)
add_custom_target(docs-c
  COMMAND gi-docgen check --quiet --config ${reference}/reference.toml ${gir}
  COMMAND gi-docgen generate --quiet --no-namespace-dir --fatal-warnings
          --config ${reference}/reference.toml --content-dir ${reference}
          --output-dir ${PROJECT_BINARY_DIR}/docs/c ${gir}
  DEPENDS ${gir}
  VERBATIM)
add_dependencies(docs-c qorix-gir)
