# SPDX-License-Identifier: GPL-3.0-or-later
# Settings that hold for every target, and the functions that declare them.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)

# Contraction would make a sum depend on the compiler's choice of fused operations.
# Nobody reads errno or traps after arithmetic, and without both loops with a choice vectorise.
add_compile_options(-Wall -Wextra -ffp-contract=off -fno-math-errno -fno-trapping-math)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-gnu-unique)
endif()
if(QUILLOREA_SANITIZE)
  add_compile_options(-fsanitize=${QUILLOREA_SANITIZE} -fno-omit-frame-pointer)
  if(QUILLOREA_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=all)
  endif()
  add_link_options(-fsanitize=${QUILLOREA_SANITIZE})
endif()

# A header or library that must be there; stops with the name of its package.
function(quillorea_require_header header package)
  find_path(QUILLOREA_HAS_${package} ${header})
  if(NOT QUILLOREA_HAS_${package})
    message(FATAL_ERROR "${header} is missing: install ${package} (./dev setup does it)")
  endif()
endfunction()

# quillorea_library(NAME SOURCES file... [LIBRARIES target...])
# One folder of src/ as a static library. Its LIBRARIES are the folders it may include.
function(quillorea_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES})
endfunction()

# quillorea_test(NAME SOURCES file... [LIBRARIES target...] [LONG])
# One folder of tests/ as a GoogleTest program; each case becomes a CTest test. What takes longer
# than a few seconds is LONG: run by ./dev test --full only.
function(quillorea_test name)
  cmake_parse_arguments(ARG "LONG" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main)
  set(properties TIMEOUT 300)
  if(ARG_LONG)
    set(properties TIMEOUT 3600 LABELS long)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# quillorea_fuzz(NAME SOURCES file... [LIBRARIES target...])
# A libFuzzer program. The inputs kept in corpus/NAME run through it as a CTest test.
function(quillorea_fuzz name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  if(QUILLOREA_BUILD_TESTS)
    add_test(NAME ${name} COMMAND ${name} -runs=0 ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
  endif()
endfunction()

# quillorea_archive(VARIABLE LIBRARY PACKAGE)
# The static library of a package, which goes into the shared library as a private copy.
function(quillorea_archive variable library package)
  find_library(${variable} ${CMAKE_STATIC_LIBRARY_PREFIX}${library}${CMAKE_STATIC_LIBRARY_SUFFIX})
  if(NOT ${variable})
    message(FATAL_ERROR "lib${library} is missing: install ${package} (./dev setup does it)")
  endif()
endfunction()
