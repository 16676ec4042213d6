# Compiler settings shared by every target of the project.
#
# project_options is an interface target that each of our own targets links privately: it carries
# the warning flags (so that third-party headers, included as system headers, stay quiet) and the
# sanitizer flags of the sanitize preset.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE -Wall -Wextra)
if(ANIM_WERROR)
  target_compile_options(project_options INTERFACE -Werror)
endif()

if(ANIM_SANITIZE)
  # Sanitizers apply to the whole build, libraries included, so that a shared library loaded at
  # run time by a sanitized executable is instrumented as well.
  # GCC's UBSan leaves out float-cast-overflow (a double beyond the range of the int it is cast
  # to, as a frame of 3e9 once was): it is asked for by name.
  add_compile_options(-fsanitize=address,undefined,float-cast-overflow -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined,float-cast-overflow)
  add_link_options(-fsanitize=address,undefined)
endif()

if(ANIM_FUZZ)
  # libFuzzer comes with clang. Every object gets the fuzzer's coverage and the sanitizers; the
  # fuzz programs alone link libFuzzer's main (tests/fuzz/).
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "ANIM_FUZZ needs clang (the fuzz preset chooses clang++), not ${CMAKE_CXX_COMPILER_ID}")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# anim_add_gtest(<name> SOURCES <files...> LIBS <targets...>)
# One test executable; each of its test cases becomes a CTest test, listed when CTest runs rather
# than at build time.
function(anim_add_gtest name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main project_options)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()
