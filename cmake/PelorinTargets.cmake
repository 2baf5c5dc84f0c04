# Shared settings for the project's own targets.
function(pelorin_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  target_compile_definitions(${target} PRIVATE PELORIN_VERSION="${PROJECT_VERSION}")
endfunction()

# One static library per source folder; its headers are included as "folder/Header.h".
function(pelorin_library target)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  add_library(${target} STATIC ${ARG_SOURCES})
  pelorin_target_defaults(${target})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC_LIBS} PRIVATE ${ARG_PRIVATE_LIBS})
endfunction()

# The name the dynamic loader knows a library by (libavformat.so.59 for libavformat.so.59.27.100),
# for a library the program opens by name when first needed instead of linking it.
function(pelorin_soname_of out name hints)
  find_library(pelorin_lib_${name} NAMES ${name} HINTS ${hints} REQUIRED)
  get_filename_component(real_file "${pelorin_lib_${name}}" REALPATH)
  get_filename_component(real_name "${real_file}" NAME)
  string(REGEX REPLACE "^(lib${name}\\.so\\.[0-9]+).*$" "\\1" soname "${real_name}")
  if(NOT soname MATCHES "^lib${name}\\.so\\.[0-9]+$")
    message(FATAL_ERROR "cannot tell the versioned name of lib${name} from ${real_file}")
  endif()
  set(${out} "${soname}" PARENT_SCOPE)
endfunction()
