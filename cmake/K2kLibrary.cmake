find_package(Threads REQUIRED)

# Flags that every target of the project is built with. Numbers are part of the level format, so nothing that lets the
# compiler change a result (fast-math, fused multiply-add, wider intermediates) may stand here.
add_library(k2k_flags INTERFACE)
target_compile_options(k2k_flags INTERFACE
  -Wall -Wextra -Wconversion -Wno-sign-conversion -Wshadow -ffp-contract=off
  $<$<BOOL:${K2K_WERROR}>:-Werror>)
# g++ 12 leaves out the rounding of double to float and back where it handles two neighbouring numbers at once.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(k2k_flags INTERFACE -fno-tree-slp-vectorize)
endif()
target_include_directories(k2k_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(K2K_SANITIZE)
  target_compile_options(k2k_flags INTERFACE -fsanitize=${K2K_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(k2k_flags INTERFACE -fsanitize=${K2K_SANITIZE})
endif()

# k2k_library(NAME DEPENDS a b): the library k2k_NAME of all .cpp files in the current folder; DEPENDS names the folders
# below it, and those are the only ones whose headers it may include (tests/architecture holds the sources against it).
function(k2k_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LINKS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp "")
    set(sources ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp)
  endif()
  add_library(k2k_${name} STATIC ${sources})
  target_link_libraries(k2k_${name} PUBLIC k2k_flags Threads::Threads PRIVATE ${ARG_LINKS})
  foreach(dep IN LISTS ARG_DEPENDS)
    target_link_libraries(k2k_${name} PUBLIC k2k_${dep})
  endforeach()
endfunction()

# How test code is compiled: GoogleTest's headers once for all of it, and light optimisation, as compiling is most of the
# time that a run of the tests takes.
function(k2k_test_target target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1> $<$<CONFIG:RelWithDebInfo>:-g1>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU) # g++ 12's false alarms about inlined std::string and std::vector
    target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict)
  endif()
  if(target STREQUAL test_support)
    target_precompile_headers(test_support PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <array> <cmath> <cstdint>
      <filesystem> <fstream> <functional> <memory> <random> <span> <sstream> <string> <string_view> <vector>)
  else()
    target_precompile_headers(${target} REUSE_FROM test_support)
  endif()
endfunction()

# k2k_tests(NAME LIBS ...): the test program test_NAME of all *_test.cpp in the current folder.
function(k2k_tests name)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(test_${name} PRIVATE k2k_flags ${ARG_LIBS} GTest::gmock GTest::gtest_main)
  k2k_test_target(test_${name})
  gtest_discover_tests(test_${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
