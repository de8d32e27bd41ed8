# draimiofaf_add_platform_check(NAME SOURCES FIXTURES.c ... LIBRARIES PLATFORM-LIBRARY ...)
# Adds a program that checks a platform. platform_check.h describes the fixtures.
function(draimiofaf_add_platform_check name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  set(sources main.c arrays.c memory.c objects.c requests.c switch.c)
  list(TRANSFORM sources PREPEND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/)
  add_executable(${name} ${sources} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES C_STANDARD 11)
  target_compile_definitions(${name} PRIVATE _GNU_SOURCE)
  # So that the addresses of the platform's names are those in its libraries.
  target_compile_options(${name} PRIVATE -fPIC)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
  target_link_libraries(${name} PRIVATE draimiofaf::headers ${arg_LIBRARIES} ${CMAKE_DL_LIBS})
endfunction()
