# Packages for Debian, one for each component of what is installed: cpack in the build folder makes them.
# The maintainer: the same variables as Debian's own tools read.
if(DEFINED ENV{DEBEMAIL} AND DEFINED ENV{DEBFULLNAME})
  set(ODFMODEL_DEB_MAINTAINER "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
  set(ODFMODEL_DEB_MAINTAINER "odfmodel maintainers <root@localhost>")
endif()
set(ODFMODEL_DEB_VERSION "${PROJECT_VERSION}-1")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME odfmodel)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/debs")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/stage.cmake")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${ODFMODEL_DEB_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SOURCE odfmodel)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

set(copyright "${PROJECT_SOURCE_DIR}/cmake/debian/copyright")
set(changelog "${PROJECT_BINARY_DIR}/debian/changelog.Debian")
configure_file(cmake/debian/changelog.in "${changelog}" @ONLY)
execute_process(COMMAND gzip -9nfk "${changelog}" COMMAND_ERROR_IS_FATAL ANY)

# The package of a component: its name, section, short description, and more lines of it.
set(CPACK_COMPONENTS_ALL "")
function(odfmodel_deb component name section summary description)
  string(TOUPPER ${component} id)
  set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${id}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${id}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  install(FILES "${copyright}" "${changelog}.gz" DESTINATION share/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(about "The library opens texts, spreadsheets, presentations, drawings and
formulas of the OpenDocument Format as trees of typed elements, and
saves them with everything that the file had.")
set(library "libodfmodel${PROJECT_VERSION_MAJOR}")
set(same_version "${library} (= ${ODFMODEL_DEB_VERSION})")

odfmodel_deb(library ${library} libs "object model of the OpenDocument Format" "${about}")
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs"
  "libodfmodel ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION})\n")
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs;${PROJECT_BINARY_DIR}/debian/triggers")

odfmodel_deb(dev libodfmodel-dev libdevel "object model of the OpenDocument Format - headers"
  "${about}

This package has the headers, and what CMake and pkg-config find the
library by.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${same_version}")

if(ODFMODEL_CLI)
  odfmodel_deb(command odfmodel utils "looks into and changes OpenDocument files"
    "The command shows, checks, compares, converts and changes documents of
the OpenDocument Format.")
  set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${same_version}")
endif()

if(ODFMODEL_PYTHON)
  odfmodel_deb(python3 python3-odfmodel python "OpenDocument files as trees of typed elements for Python"
    "The package opens, changes and saves documents of the OpenDocument
Format: their elements as classes, and their sheets as cells, arrays of
numpy and data frames of pandas.")
  math(EXPR next_minor "${Python3_VERSION_MINOR} + 1")
  set(python "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}~)")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_DEPENDS
    "${same_version}, ${python}, python3 (<< ${Python3_VERSION_MAJOR}.${next_minor})")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_SUGGESTS "python3-numpy, python3-pandas")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/cmake/debian/postinst;${PROJECT_SOURCE_DIR}/cmake/debian/prerm")
endif()
include(CPack)
