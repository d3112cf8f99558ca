# What every target of the project is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_library(odfmodel_settings INTERFACE)
target_compile_options(odfmodel_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  # Nobody replaces single functions of the library from outside, so calls within it may be inlined.
  $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>
  # g++ 12 sees overlaps in std::string that aren't there when it optimises (its bug 105329).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<BOOL:${ODFMODEL_WERROR}>:-Werror>)

set(ODFMODEL_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(ODFMODEL_SANITIZE)
  add_compile_options(-fsanitize=${ODFMODEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ODFMODEL_SANITIZE})
  if(ODFMODEL_SANITIZE MATCHES "address")
    add_compile_definitions(ODFMODEL_ADDRESS_SANITIZER)
  endif()
endif()
