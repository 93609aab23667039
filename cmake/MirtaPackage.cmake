# The package for the machine's computer: `cpack` in the build folder makes mirta_<version>_<architecture>.deb.
# Data of the machine (users, welds, programs, journal) is made by the console and never part of the package, so
# that neither an upgrade nor a removal touches it.
set(home home/oper/bin)

install(TARGETS mirta RUNTIME DESTINATION ${home})
foreach(folder ${home}/contours ${home}/passports ${home}/dump programs/ch1 programs/ch2 programs/ch3 points log)
  install(DIRECTORY DESTINATION ${folder})
endforeach()
install(FILES packaging/mirta.desktop DESTINATION usr/share/applications)
install(FILES packaging/mirta.metainfo.xml DESTINATION usr/share/metainfo)
install(DIRECTORY packaging/icons/hicolor DESTINATION usr/share/icons)
install(FILES packaging/mirta.sudoers DESTINATION etc/sudoers.d RENAME mirta PERMISSIONS OWNER_READ GROUP_READ)
install(PROGRAMS packaging/session DESTINATION usr/lib/mirta)
install(FILES packaging/mirta-kiosk.service DESTINATION lib/systemd/system)
install(FILES packaging/copyright DESTINATION usr/share/doc/mirta)
install(FILES packaging/lintian-overrides DESTINATION usr/share/lintian/overrides RENAME mirta)

# Changelog and manual go compressed, without the time of the build in them.
find_program(GZIP_PROGRAM gzip)
function(mirta_install_compressed source folder name)
  install(CODE "
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
    execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${CMAKE_SOURCE_DIR}/packaging/${source}
                    OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}/${name}.gz\"
                    COMMAND_ERROR_IS_FATAL ANY)")
endfunction()
mirta_install_compressed(changelog usr/share/doc/mirta changelog)
mirta_install_compressed(mirta.1 usr/share/man/man1 mirta.1)
mirta_install_compressed(mirta.ru.1 usr/share/man/ru/man1 mirta.1)

set(MIRTA_MAINTAINER "MIRTA maintainers <maintainers@mirta.invalid>" CACHE STRING "Whom the package names for questions")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_PACKAGE_NAME mirta)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${MIRTA_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "adduser, fonts-dejavu-core, sudo")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "kcalc, okular, openbox, xinit, xserver-xorg")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "operator console of an electron-beam welding installation")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "A full-screen touch program (1920 by 1200, in Russian) for the control
computer of the machine: a logged-in operator pumps down the chamber, moves
the drives, teaches a weld as a contour with a technology table, starts the
programs of three NC channels and gets a record of the run.
.
The motion controller, both vacuum controllers and the beam unit are reached
under the addresses that the program was configured with.")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
foreach(script conffiles postinst prerm postrm)
  list(APPEND CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/${script})
endforeach()
include(CPack)
