# The browsable reference: cmake --build <folder> --target docs
find_program(DOXYGEN doxygen)
if(DOXYGEN)
  set(ODFMODEL_DOCS_OUTPUT "${PROJECT_BINARY_DIR}/docs")
  configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
  add_custom_target(docs
    COMMAND "${DOXYGEN}" "${PROJECT_BINARY_DIR}/Doxyfile"
    DEPENDS odfmodel_generate
    COMMENT "Making the reference in ${ODFMODEL_DOCS_OUTPUT}/html"
    VERBATIM)
endif()
