# Headers, library, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS odfmodel EXPORT odfmodelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/odfmodel" "${ODFMODEL_GENERATED}/include/odfmodel"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)

# A shared library has found its own; a static one leaves them to whoever links it.
get_target_property(type odfmodel TYPE)
set(ODFMODEL_IS_STATIC OFF)
set(ODFMODEL_PC_REQUIRES "")
set(ODFMODEL_PC_LIBS "")
if(type STREQUAL "STATIC_LIBRARY")
  set(ODFMODEL_IS_STATIC ON)
  set(ODFMODEL_PC_REQUIRES "expat libzip libdeflate libgcrypt zlib")
  if(ODFMODEL_USER_DATA)
    string(APPEND ODFMODEL_PC_REQUIRES " libgsf-1")
  endif()
  set(ODFMODEL_PC_LIBS " -pthread")
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/odfmodel")
install(EXPORT odfmodelTargets NAMESPACE odfmodel:: DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/odfmodelConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/odfmodelConfig.cmake" INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/odfmodelConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/odfmodelConfig.cmake" "${PROJECT_BINARY_DIR}/odfmodelConfigVersion.cmake"
  DESTINATION ${package_dir} COMPONENT dev)

# Relative to its own place, so that an installation under any prefix, or a moved one, works.
file(RELATIVE_PATH ODFMODEL_PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/odfmodel.pc.in" "${PROJECT_BINARY_DIR}/odfmodel.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/odfmodel.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
