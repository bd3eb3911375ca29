# What an installation holds besides the programs and bundles that their own folders install
# (bin/, lib/spindeck/preference-panes, lib/spindeck/application-bundles): the desktop's menu
# entry, icons and software-centre metadata, the log-in launcher's autostart entry, manual
# pages and documentation. Included after every program target exists.
include(GNUInstallDirs)
set(SPINDECK_PACKAGE vemora-spindeck)
set(SPINDECK_AUTOSTART_ENTRY com.vemora.spindeck.LoginLauncher.desktop)
set(packaging "${PROJECT_SOURCE_DIR}/packaging")

# Every program says which release it belongs to.
foreach(program panehost spindeckctl LoginLauncher DemoBackend DemoITunesHelper DemoConfigurationApp)
  target_compile_definitions(${program} PRIVATE SPINDECK_VERSION="${PROJECT_VERSION}")
endforeach()

install(FILES "${packaging}/com.vemora.spindeck.Settings.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${packaging}/com.vemora.spindeck.Settings.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(FILES "${packaging}/icons/com.vemora.spindeck.Settings.svg"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install(FILES "${packaging}/icons/com.vemora.spindeck.Settings.png"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/128x128/apps")

# XDG desktops start the entries of <configuration folder>/xdg/autostart at log-in. The folder
# follows the prefix given at install time (which may differ from the configured one, as when
# packaging), and under /usr it is /etc.
install(CODE "
  set(etc \"\${CMAKE_INSTALL_PREFIX}/etc\")
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(etc /etc)
  endif()
  file(INSTALL \"${packaging}/${SPINDECK_AUTOSTART_ENTRY}\" DESTINATION \"\${etc}/xdg/autostart\")")

# Manual pages and the changelog are installed compressed, reproducibly (no name or time
# stamp in the gzip header).
set(compressed)
foreach(page panehost spindeckctl vemora-login-launcher)
  list(APPEND compressed "${CMAKE_BINARY_DIR}/packaging/${page}.1.gz")
  add_custom_command(OUTPUT "${CMAKE_BINARY_DIR}/packaging/${page}.1.gz"
    COMMAND gzip -9nc "${packaging}/man/${page}.1" > "${CMAKE_BINARY_DIR}/packaging/${page}.1.gz"
    DEPENDS "${packaging}/man/${page}.1" VERBATIM)
endforeach()
add_custom_command(OUTPUT "${CMAKE_BINARY_DIR}/packaging/changelog.gz"
  COMMAND gzip -9nc "${packaging}/debian/changelog" > "${CMAKE_BINARY_DIR}/packaging/changelog.gz"
  DEPENDS "${packaging}/debian/changelog" VERBATIM)
add_custom_target(SpindeckCompressedDocs ALL DEPENDS ${compressed} "${CMAKE_BINARY_DIR}/packaging/changelog.gz")
install(FILES ${compressed} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

set(docs "${CMAKE_INSTALL_DATADIR}/doc/${SPINDECK_PACKAGE}")
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/LICENSE" "${packaging}/debian/copyright"
  "${CMAKE_BINARY_DIR}/packaging/changelog.gz" DESTINATION "${docs}")

# The bundles are copied, not installed as targets, so a stripping install (a package's)
# strips the programs in them here, found by their ELF header; the pane's code keeps the
# dynamic symbols the host finds its class by.
install(CODE "
  if(CMAKE_INSTALL_DO_STRIP)
    # Links (the pane's to the application) are not followed: each program is stripped once.
    cmake_policy(SET CMP0009 NEW)
    file(GLOB_RECURSE files LIST_DIRECTORIES false \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/spindeck/*\")
    foreach(file IN LISTS files)
      if(NOT IS_SYMLINK \"\${file}\")
        file(READ \"\${file}\" magic LIMIT 4 HEX)
        if(magic STREQUAL \"7f454c46\")
          execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \"\${file}\" COMMAND_ERROR_IS_FATAL ANY)
        endif()
      endif()
    endforeach()
  endif()")
