# Flags every target of ours gets, and the few helpers the folders share.
add_library(kelpin_flags INTERFACE)
target_include_directories(kelpin_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kelpin_flags INTERFACE -Wall -Wextra -Werror -Wconversion -Wshadow
                                              -Wnon-virtual-dtor -Wnull-dereference)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(kelpin_flags INTERFACE -Wthread-safety)
else()
  # GCC 12 sees null dereferences and overflows in inlined library code that are not there.
  target_compile_options(kelpin_flags INTERFACE -Wno-null-dereference)
endif()
if(KELPIN_SANITIZE)
  target_compile_options(kelpin_flags INTERFACE -fsanitize=${KELPIN_SANITIZE}
                                                -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(kelpin_flags INTERFACE -fsanitize=${KELPIN_SANITIZE})
endif()

find_package(Threads REQUIRED)

# Card readers (PC/SC), where the library for them is installed.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(KELPIN_PCSC QUIET IMPORTED_TARGET libpcsclite)
endif()

# kelpin_library(NAME LIBS...): a static library of every .cpp of the current folder.
function(kelpin_library name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp
                                      ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources MATCHES "\\.cpp")
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp "")
    list(APPEND sources ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp)
  endif()
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${name} PUBLIC kelpin_flags Threads::Threads ${ARGN})
endfunction()

# kelpin_test_options(NAME HEADERS...): how the test cases of a program are compiled; with further
# headers that most of its files read.
function(kelpin_test_options name)
  target_compile_definitions(${name} PRIVATE KELPIN_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  set_target_properties(${name} PROPERTIES KELPIN_TEST TRUE)
  # Test cases run once; what they test is optimised as the build says.
  target_compile_options(${name} PRIVATE -O0 -g1)
  # These headers are more than half of what each file would read. GCC gains nothing from this.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <functional> <map>
                              <memory> <string> <vector>)
    if(ARGN)
      target_precompile_headers(${name} PRIVATE ${ARGN})
    endif()
  endif()
endfunction()

# kelpin_test(NAME LABELS LIBS...): a GoogleTest program of every *_test.cpp of the current folder,
# one CTest test, so that a run costs one process. Labels: the README's, and `sanitized` for what
# the sanitizers' builds run beside `core` and `fault`.
function(kelpin_test name label)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  if("kelpin_softcard" IN_LIST ARGN)
    kelpin_test_options(${name} <nlohmann/json.hpp>)
  else()
    kelpin_test_options(${name})
  endif()
  target_link_libraries(${name} PRIVATE ${ARGN} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES LABELS "${label}" TIMEOUT 1800)
  # What takes longest begins first, or it ends alone (seconds of the thread sanitizer's run).
  set(seconds_fault_tests 240)
  set(seconds_modem_tests 100)
  set(seconds_card_tests 50)
  set(seconds_flow_tests 40)
  if(seconds_${name})
    set_tests_properties(${name} PROPERTIES COST ${seconds_${name}})
  endif()
endfunction()
