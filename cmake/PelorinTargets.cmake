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
