# Makes the element classes from the tables below src/elements. The output lives in the build tree only.
file(GLOB_RECURSE ODFMODEL_TABLES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/elements/*.toml")
file(GLOB ODFMODEL_GENERATOR CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tools/elementgen/*.py")
set(ODFMODEL_GENERATED "${PROJECT_BINARY_DIR}/generated")

set(ODFMODEL_GENERATED_FILES "")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ODFMODEL_TABLES})
foreach(table IN LISTS ODFMODEL_TABLES)
  file(STRINGS "${table}" elements REGEX "^\\[\\[element\\]\\]")
  if(NOT elements)
    continue() # no class of its own
  endif()
  file(RELATIVE_PATH name "${PROJECT_SOURCE_DIR}/src/elements" "${table}")
  string(REGEX REPLACE "\\.toml$" "" name "${name}")
  list(APPEND ODFMODEL_GENERATED_FILES
    "${ODFMODEL_GENERATED}/include/odfmodel/elements/${name}.h" "${ODFMODEL_GENERATED}/src/${name}.cpp")
endforeach()
list(APPEND ODFMODEL_GENERATED_FILES "${ODFMODEL_GENERATED}/include/odfmodel/elements/elements.h"
  "${ODFMODEL_GENERATED}/src/registry.cpp" "${ODFMODEL_GENERATED}/src/classes.h")

add_custom_command(
  OUTPUT ${ODFMODEL_GENERATED_FILES}
  COMMAND Python3::Interpreter "${PROJECT_SOURCE_DIR}/tools/elementgen/elementgen.py"
    --tables "${PROJECT_SOURCE_DIR}/src/elements" --output "${ODFMODEL_GENERATED}" --complete
  DEPENDS ${ODFMODEL_TABLES} ${ODFMODEL_GENERATOR} "${PROJECT_SOURCE_DIR}/src/core/namespaces.cpp"
  COMMENT "Making the element classes from their tables"
  VERBATIM)
add_custom_target(odfmodel_generate DEPENDS ${ODFMODEL_GENERATED_FILES})
