# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: Apache-2.0
#
# What is installed beside the programs, and the Debian package (scripts/package). What belongs to the application
# in the status bar comes with the target `velmora`.
set(identifier com.brindlewick.Velmora)
set(packaging "${CMAKE_SOURCE_DIR}/packaging")

# velmora_install_packed(FILE NAME FOLDER)   compressed without its date, as Debian wants it
function(velmora_install_packed file name folder)
  set(packed "${CMAKE_CURRENT_BINARY_DIR}/packed/${name}.gz")
  add_custom_command(
    OUTPUT "${packed}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/packed"
    COMMAND gzip -9nc "${file}" > "${packed}"
    DEPENDS "${file}" VERBATIM)
  add_custom_target("pack-${name}" ALL DEPENDS "${packed}")
  install(FILES "${packed}" DESTINATION "${folder}")
endfunction()

foreach(program velmora velmora-assistant velmora-converse)
  if(TARGET ${program})
    velmora_install_packed("${packaging}/man/${program}.1" ${program}.1 "${CMAKE_INSTALL_MANDIR}/man1")
  endif()
endforeach()

if(TARGET velmora)
  install(FILES "${packaging}/desktop/${identifier}.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
  install(FILES "${packaging}/desktop/${identifier}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
  configure_file("${packaging}/desktop/${identifier}.service.in" "${CMAKE_CURRENT_BINARY_DIR}/${identifier}.service" @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${identifier}.service"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/dbus-1/services")
  set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
  install(FILES "${CMAKE_SOURCE_DIR}/resources/icons/velmora.svg"
    DESTINATION "${icons}/scalable/apps" RENAME ${identifier}.svg)
  install(FILES "${CMAKE_SOURCE_DIR}/resources/icons/velmora-symbolic.svg"
    DESTINATION "${icons}/symbolic/apps" RENAME ${identifier}-symbolic.svg)
endif()

set(documents "${CMAKE_INSTALL_DATADIR}/doc/velmora")
install(FILES "${packaging}/debian/copyright" DESTINATION "${documents}")
velmora_install_packed("${packaging}/debian/changelog" changelog "${documents}")
# Something to ask where there is no microphone.
install(DIRECTORY "${CMAKE_SOURCE_DIR}/resources/questions" DESTINATION "${documents}/examples")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VENDOR "The Velmora developers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Velmora developers <velmora@brindlewick.com>")
file(READ "${packaging}/debian/description" description)
string(FIND "${description}" "\n" end)
string(SUBSTRING "${description}" 0 ${end} CPACK_PACKAGE_DESCRIPTION_SUMMARY)
math(EXPR begin "${end} + 1")
string(SUBSTRING "${description}" ${begin} -1 description)
string(STRIP "${description}" CPACK_DEBIAN_PACKAGE_DESCRIPTION)
# What no program is linked to: the model of the recogniser, and plugins of the toolkit.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "pocketsphinx-en-us")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pulseaudio | pipewire-pulse")
if(TARGET velmora)
  string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libqt6svg6")
  string(APPEND CPACK_DEBIAN_PACKAGE_RECOMMENDS
    ", default-dbus-session-bus | dbus-session-bus, qt6-translations-l10n")
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-wayland, xdg-desktop-portal")
endif()
include(CPack)
