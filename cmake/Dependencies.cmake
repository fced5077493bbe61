# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: Apache-2.0
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(Protobuf REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus LinguistTools Network Svg WebEngineQuick WebEngineWidgets Widgets)

pkg_check_modules(GRPC REQUIRED IMPORTED_TARGET grpc++ absl_synchronization)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
pkg_check_modules(SOXR REQUIRED IMPORTED_TARGET soxr)
pkg_check_modules(MPG123 REQUIRED IMPORTED_TARGET libmpg123)
pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-xinput xcb-xkb xkbcommon xkbcommon-x11)
pkg_check_modules(UNWIND REQUIRED libunwind)
pkg_check_modules(LAME REQUIRED IMPORTED_TARGET lame)
pkg_check_modules(POCKETSPHINX REQUIRED IMPORTED_TARGET pocketsphinx sphinxbase)
# sphinxbase names a folder that Debian does not make, which CMake takes for a fault.
get_target_property(folders PkgConfig::POCKETSPHINX INTERFACE_INCLUDE_DIRECTORIES)
list(REMOVE_ITEM folders /usr/include/sphinxbase)
set_target_properties(PkgConfig::POCKETSPHINX PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${folders}")

# flite ships no pkg-config file.
find_path(FLITE_INCLUDE flite/flite.h REQUIRED)
add_library(velmora_flite INTERFACE)
target_include_directories(velmora_flite SYSTEM INTERFACE "${FLITE_INCLUDE}")
target_link_libraries(velmora_flite INTERFACE flite_cmu_us_rms flite_usenglish flite_cmulex flite m)

find_program(GRPC_CPP_PLUGIN grpc_cpp_plugin REQUIRED)

if(BUILD_TESTING OR VELMORA_BENCHMARKS)
  find_package(GTest REQUIRED)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
  include(GoogleTest)
  pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
endif()
if(VELMORA_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
