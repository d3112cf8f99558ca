# What makes a whole build short: headers that most files include are precompiled, and files that cost little beside
# their headers are compiled together. A compiler cache would keep neither well, so with one each file is alone.
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(alone ON)
else()
  set(alone OFF)
endif()
option(ODFMODEL_COMPILE_ALONE "Compile each file by itself, without precompiled headers" ${alone})
if(ODFMODEL_COMPILE_ALONE)
  return()
endif()

# Most of what a file costs is its headers. Names in unnamed namespaces have to differ within a layer.
set_target_properties(odfmodel_system odfmodel_platform odfmodel_core odfmodel_serial odfmodel_package odfmodel_document
  PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
# The generated sources: constant tables and one-line functions behind the same headers.
set_target_properties(odfmodel_elements PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 5)
if(ODFMODEL_SANITIZE)
  # Halves what the checks cost to compile.
  target_compile_options(odfmodel_elements PRIVATE -O0)
  if(TARGET odfmodel_cli)
    target_compile_options(odfmodel_cli PRIVATE -O0)
  endif()
endif()

set(std_headers <algorithm> <array> <filesystem> <functional> <map> <memory> <optional> <string> <string_view> <vector>)
target_precompile_headers(odfmodel_package PRIVATE ${std_headers} <odfmodel/package/package.h>)
target_precompile_headers(odfmodel_document PRIVATE ${std_headers} <odfmodel/odfmodel.h>)

if(TARGET odfmodel_cli)
  target_precompile_headers(odfmodel_cli PRIVATE ${std_headers} <odfmodel/odfmodel.h>)
  # The parser of the command line is thousands of templates in a header, and no work to be fast at: the files that
  # include it are compiled as one, those of the other folders a folder at a time.
  get_target_property(files odfmodel_cli SOURCES)
  foreach(file IN LISTS files)
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY "${PROJECT_SOURCE_DIR}/cli" OUTPUT_VARIABLE name)
    set(group options)
    if(name MATCHES "^(check|convert|diff|info|io|meta|package)/")
      set(group ${CMAKE_MATCH_1})
    endif()
    set_source_files_properties("${file}" DIRECTORY "${PROJECT_SOURCE_DIR}/cli" PROPERTIES UNITY_GROUP ${group})
  endforeach()
  set_target_properties(odfmodel_cli PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endif()

if(TARGET odfmodel_python)
  set_target_properties(odfmodel_python PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 5)
endif()

if(TARGET odfmodel_test_headers)
  target_precompile_headers(odfmodel_test_headers PRIVATE ${std_headers}
    <random> <regex> <thread> <gtest/gtest.h> <odfmodel/odfmodel.h> <odfmodel/core/foreign.h> <odfmodel/core/reflection.h>)
  get_property(programs DIRECTORY "${PROJECT_SOURCE_DIR}/tests" PROPERTY ODFMODEL_TEST_PROGRAMS)
  foreach(program IN LISTS programs)
    target_precompile_headers(${program} REUSE_FROM odfmodel_test_headers)
    # Here, too, names in unnamed namespaces have to differ; g++ warns of fixtures in them unless a file is alone.
    set_target_properties(${program} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
    target_compile_options(${program} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endforeach()
endif()

if(TARGET odfmodel_tour)
  get_property(examples DIRECTORY "${PROJECT_SOURCE_DIR}/examples" PROPERTY ODFMODEL_EXAMPLES)
  foreach(example IN LISTS examples)
    target_compile_options(${example} PRIVATE -O0)
    if(example STREQUAL "odfmodel_tour")
      target_precompile_headers(${example} PRIVATE ${std_headers} <iostream> <odfmodel/odfmodel.h>)
    else()
      target_precompile_headers(${example} REUSE_FROM odfmodel_tour)
    endif()
  endforeach()
endif()
