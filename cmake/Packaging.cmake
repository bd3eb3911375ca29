# The Debian package, made by `cpack` in the build folder (or `cpack --config
# <build>/CPackConfig.cmake -B <folder>`): everything `cmake --install` puts under /usr, with
# the autostart entry in /etc. Its dependencies come from the programs' shared libraries.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${SPINDECK_PACKAGE}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "Vemora")
set(CPACK_PACKAGE_CONTACT "Vemora spindeck developers <spindeck@vemora.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "settings for the Vemora spindeck input device")
set(CPACK_PACKAGE_DESCRIPTION
  "The settings pane of the Vemora spindeck, a hand-held input device, with the\n\
settings application that shows it. The pane tells whether the spindeck's\n\
background helper runs, starts and stops it, and keeps it among the user's\n\
log-in items while it is wanted; a launcher started at log-in on any XDG\n\
desktop opens those items. spindeckctl offers the same controls to scripts.\n\
A demo configuration application with its helpers is included.")
set(CPACK_PACKAGE_FILE_NAME "${SPINDECK_PACKAGE}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://vemora.example/spindeck")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_PREFIX /usr)
# The install rules see /usr as the prefix (so the autostart entry goes to /etc) and the
# package's staging folder as DESTDIR.
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)

# The maintainer scripts name the installed launcher and autostart entry.
set(SPINDECK_PACKAGED_LAUNCHER "${CPACK_PACKAGING_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/vemora-login-launcher")
set(SPINDECK_PACKAGED_AUTOSTART "/etc/xdg/autostart/${SPINDECK_AUTOSTART_ENTRY}")
set(control "${CMAKE_BINARY_DIR}/packaging/control")
foreach(script prerm postrm conffiles)
  configure_file("${PROJECT_SOURCE_DIR}/packaging/debian/${script}.in" "${control}/${script}" @ONLY)
endforeach()
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${control}/prerm;${control}/postrm;${control}/conffiles")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
