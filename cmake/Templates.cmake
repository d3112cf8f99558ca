# Puts the XML below src/document/templates into a header, one string a file: text/content.xml becomes
# kTextContent. When a file changes, the build configures again and makes them again.
set(templates_folder "${PROJECT_SOURCE_DIR}/src/document/templates")
file(GLOB_RECURSE template_files CONFIGURE_DEPENDS "${templates_folder}/*.xml")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${template_files})

set(template_strings "")
foreach(file IN LISTS template_files)
  file(RELATIVE_PATH words "${templates_folder}" "${file}")
  string(REGEX REPLACE "\\.xml$" "" words "${words}")
  string(REGEX REPLACE "[/_]" ";" words "${words}")
  set(name "k")
  foreach(word IN LISTS words)
    string(SUBSTRING "${word}" 0 1 initial)
    string(SUBSTRING "${word}" 1 -1 rest)
    string(TOUPPER "${initial}" initial)
    string(APPEND name "${initial}${rest}")
  endforeach()
  file(READ "${file}" xml)
  string(APPEND template_strings "inline constexpr std::string_view ${name} = R\"xml(${xml})xml\";\n")
endforeach()
file(CONFIGURE OUTPUT "${ODFMODEL_GENERATED}/src/document/template_xml.h" @ONLY CONTENT
"#pragma once

#include <string_view>

namespace ODF::template_xml {

@template_strings@
} // namespace ODF::template_xml
")
