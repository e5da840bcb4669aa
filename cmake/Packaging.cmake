# Installation in the usual places (GNUInstallDirs) and the packages CPack
# makes from it: a .deb on Linux (cpack -G DEB), a zip on Windows (cpack -G ZIP).
# The version of both is the project's VERSION.
include(GNUInstallDirs)

set(TAVENA_MAINTAINER "TAVENA service tool maintainers <serwis@tavena.example>"
    CACHE STRING "Maintainer named in the Debian package")

set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(TAVENA_PROGRAMS)
foreach(program tavena-service tavena tavena-sim)
  if(TARGET ${program})
    list(APPEND TAVENA_PROGRAMS ${program})
  endif()
endforeach()

set(TAVENA_PACKAGING ${CMAKE_SOURCE_DIR}/packaging)

# Manual pages: the version goes in, then gzip -9n as Debian wants them.
function(tavena_install_man_pages)
  set(compressed)
  foreach(program IN LISTS TAVENA_PROGRAMS)
    set(page ${CMAKE_BINARY_DIR}/man/${program}.1)
    configure_file(${TAVENA_PACKAGING}/man/${program}.1.in ${page} @ONLY)
    add_custom_command(OUTPUT ${page}.gz COMMAND gzip -9nkf ${page} DEPENDS ${page} VERBATIM)
    list(APPEND compressed ${page}.gz)
  endforeach()
  add_custom_target(man_pages ALL DEPENDS ${compressed})
  install(FILES ${compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()

# The copyright and the changelog Debian wants beside every package.
function(tavena_install_package_docs)
  # Dated by the last commit (or SOURCE_DATE_EPOCH), so that a build is repeatable.
  if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
                    OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(epoch MATCHES "^[0-9]+$")
      set(ENV{SOURCE_DATE_EPOCH} ${epoch})
    endif()
  endif()
  string(TIMESTAMP TAVENA_CHANGELOG_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
  if(epoch)
    unset(ENV{SOURCE_DATE_EPOCH})
  endif()
  set(changelog ${CMAKE_BINARY_DIR}/debian/changelog)
  configure_file(${TAVENA_PACKAGING}/debian/changelog.in ${changelog} @ONLY)
  add_custom_command(OUTPUT ${changelog}.gz COMMAND gzip -9nkf ${changelog}
                     DEPENDS ${changelog} VERBATIM)
  add_custom_target(package_changelog ALL DEPENDS ${changelog}.gz)
  install(FILES ${TAVENA_PACKAGING}/debian/copyright ${changelog}.gz
          DESTINATION ${CMAKE_INSTALL_DOCDIR})
endfunction()

function(tavena_install_linux)
  install(TARGETS ${TAVENA_PROGRAMS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  tavena_install_man_pages()
  tavena_install_package_docs()
  if(TARGET tavena-service)
    install(FILES ${TAVENA_PACKAGING}/tavena-service.desktop
            DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES ${TAVENA_PACKAGING}/tavena-service.svg
            DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  endif()
  if(TARGET tavena)
    install(FILES ${TAVENA_PACKAGING}/bash-completion/tavena
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  endif()
  # udev reads <prefix>/lib/udev, never a multiarch libdir.
  install(FILES ${TAVENA_PACKAGING}/60-tavena.rules DESTINATION lib/udev/rules.d)
endfunction()

# The zip: the programs, the DLLs they import that Windows does not ship
# (found beside the cross compiler's runtime and Qt), and the README.
function(tavena_install_windows)
  install(TARGETS ${TAVENA_PROGRAMS} RUNTIME DESTINATION .)
  set(readme ${CMAKE_BINARY_DIR}/README.txt)
  configure_file(${TAVENA_PACKAGING}/windows/README.txt.in ${readme} @ONLY NEWLINE_STYLE CRLF)
  install(FILES ${readme} DESTINATION .)

  set(dll_folders)
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(IS_ABSOLUTE "${path}")
      get_filename_component(folder "${path}" DIRECTORY REALPATH)
      list(APPEND dll_folders "${folder}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES dll_folders)
  if(TARGET tavena-service)
    # Qt's imported targets are seen only in app/, where it was found.
    find_package(Qt6 QUIET COMPONENTS Widgets)
  endif()
  if(TARGET Qt6::Core)
    list(APPEND dll_folders "$<TARGET_FILE_DIR:Qt6::Core>")
  endif()
  if(TARGET Qt6::QWindowsIntegrationPlugin)
    install(FILES "$<TARGET_FILE:Qt6::QWindowsIntegrationPlugin>" DESTINATION platforms)
    # Plugins beside the program, whatever folder the zip is unpacked in.
    file(WRITE ${CMAKE_BINARY_DIR}/qt.conf "[Paths]\r\nPrefix=.\r\nPlugins=.\r\n")
    install(FILES ${CMAKE_BINARY_DIR}/qt.conf DESTINATION .)
  endif()
  if(TARGET Qt6::QWindowsVistaStylePlugin)
    install(FILES "$<TARGET_FILE:Qt6::QWindowsVistaStylePlugin>" DESTINATION styles)
  endif()
  find_program(TAVENA_OBJDUMP NAMES ${TOOLCHAIN_PREFIX}-objdump objdump REQUIRED)
  find_program(TAVENA_STRIP NAMES ${TOOLCHAIN_PREFIX}-strip strip REQUIRED)
  set(programs)
  foreach(program IN LISTS TAVENA_PROGRAMS)
    list(APPEND programs "$<TARGET_FILE:${program}>")
  endforeach()
  install(CODE "
    set(TAVENA_WINDOWS_PROGRAMS \"${programs}\")
    set(TAVENA_DLL_FOLDERS \"${dll_folders}\")
    set(TAVENA_DLL_NAMES \"${CMAKE_BINARY_DIR}/dll-names\")
    set(TAVENA_OBJDUMP \"${TAVENA_OBJDUMP}\")
    set(TAVENA_STRIP \"${TAVENA_STRIP}\")
    include(\"${CMAKE_SOURCE_DIR}/cmake/Windowsruntime.cmake\")")
endfunction()

if(WIN32)
  tavena_install_windows()
else()
  tavena_install_linux()
endif()

set(CPACK_PACKAGE_NAME tavena)
set(CPACK_PACKAGE_VENDOR TAVENA)
set(CPACK_PACKAGE_CONTACT "${TAVENA_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "service tool for TAVENA fiscal printers")
# The long description, in lines that Debian shows as they are.
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "A service technician's tool for TAVENA fiscal printers on a serial line or\n"
  "USB: it finds the printer, reads its identity and state, programs the clock,\n"
  "VAT rates, header and fiscalisation, orders reports and a test receipt, asks\n"
  "the ENQ and DLE status bytes, compiles and sends command sequences and logs\n"
  "every exchange.\n"
  "The package holds the windowed program tavena-service, the command-line tool\n"
  "tavena and the printer simulator tavena-sim.")
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/packages)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(TARGET tavena-service)
  # Qt finds its platform plugins at run time: no library links them.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS qt6-qpa-plugins)
endif()
include(CPack)
