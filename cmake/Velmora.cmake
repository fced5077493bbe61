# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: Apache-2.0
#
# velmora_library(engine SOURCES ... [LINKS ...] [PRIVATE_LINKS ...])   one folder of src/, as velmora::engine
# velmora_program(velmora-converse SOURCES ... LINKS ...)
# velmora_plugin(velmora-web-engine SOURCES ... LINKS ...)              what src/platform/Plugin.h loads
# velmora_test(protocol SOURCES ... LINKS ...)                          one test program per folder of tests/
# velmora_benchmark(messages SOURCES ... LINKS ...)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

# A program needs only the libraries that it calls: the command line no window system.
add_link_options(-Wl,--as-needed)

# What every target of ours is compiled with; generated code is left alone.
add_library(velmora_options INTERFACE)
target_compile_options(velmora_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wimplicit-fallthrough -Wformat=2 -Wundef
  # GCC 12 takes the empty state of a moved std::optional for uninitialised (its bug 105562), and warns of
  # its own std::string at -O3 (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>
  # A header of xkb has a member that is called "explicit".
  $<$<CXX_COMPILER_ID:Clang>:-Wno-keyword-macro>)
target_compile_definitions(velmora_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS VELMORA_VERSION="${PROJECT_VERSION}")

# What is shipped makes the most of a fault's end: no writable tables of addresses, checked copies, guarded stacks.
if(NOT VELMORA_SANITIZE)
  add_compile_options($<$<CONFIG:Release>:-fstack-protector-strong>)
  add_compile_definitions($<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
  add_link_options($<$<CONFIG:Release>:-Wl,-z,relro,-z,now>)
endif()

if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()

if(VELMORA_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(VELMORA_COVERAGE)
  # Several programs and threads add to one count.
  add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
  add_link_options(--coverage)
endif()

function(velmora_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;PRIVATE_LINKS")
  add_library(velmora_${name} STATIC ${arg_SOURCES})
  add_library(velmora::${name} ALIAS velmora_${name})
  target_include_directories(velmora_${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(velmora_${name} PUBLIC ${arg_LINKS} PRIVATE velmora_options ${arg_PRIVATE_LINKS})
endfunction()

function(velmora_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE velmora_options ${arg_LINKS})
  install(TARGETS ${name})
endfunction()

# Found from the programs by the same way in the build tree and installed.
set(VELMORA_PLUGINS "${CMAKE_INSTALL_LIBDIR}/velmora")
file(RELATIVE_PATH VELMORA_PLUGINS_FROM_PROGRAM "/${CMAKE_INSTALL_BINDIR}" "/${VELMORA_PLUGINS}")

function(velmora_plugin name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_library(${name} MODULE ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(${name} PRIVATE velmora_options ${arg_LINKS})
  # What it has of our libraries is its own, whatever other plugins and the program have of them.
  target_link_options(${name} PRIVATE -Wl,--exclude-libs,ALL)
  set_target_properties(${name} PROPERTIES
    AUTOMOC ON PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${VELMORA_PLUGINS}")
  install(TARGETS ${name} LIBRARY DESTINATION "${VELMORA_PLUGINS}")
endfunction()

function(velmora_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_executable(test_${name} ${arg_SOURCES})
  target_include_directories(test_${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(test_${name} PRIVATE velmora_options ${arg_LINKS} GTest::gmock GTest::gtest_main)
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 180)
endfunction()

function(velmora_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_executable(bench_${name} ${arg_SOURCES})
  target_include_directories(bench_${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(bench_${name} PRIVATE velmora_options ${arg_LINKS})
endfunction()
