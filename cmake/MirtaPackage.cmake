# Two packages: `cpack` in the build folder makes mirta_<version>_<architecture>.deb for the machine's computer, and
# mirta-desk_<version>_<architecture>.deb, the programs for the people around the machine.
# Data of the machine (users, welds, programs, journal) is made by the console and never part of a package, so
# that neither an upgrade nor a removal touches it.
set(home home/oper/bin)
set(desk usr/lib/mirta-desk)

# Changelog and manual go compressed, without the time of the build in them.
find_program(GZIP_PROGRAM gzip)
function(mirta_install_compressed component source folder name)
  install(CODE "
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
    execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${CMAKE_SOURCE_DIR}/packaging/${source}
                    OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}/${name}.gz\"
                    COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
endfunction()

install(TARGETS mirta RUNTIME DESTINATION ${home} COMPONENT console)
foreach(folder ${home}/contours ${home}/passports ${home}/dump programs/ch1 programs/ch2 programs/ch3 points log)
  install(DIRECTORY DESTINATION ${folder} COMPONENT console)
endforeach()
install(FILES packaging/mirta.desktop DESTINATION usr/share/applications COMPONENT console)
install(FILES packaging/mirta.metainfo.xml DESTINATION usr/share/metainfo COMPONENT console)
install(DIRECTORY packaging/icons/hicolor DESTINATION usr/share/icons COMPONENT console)
install(FILES packaging/mirta.sudoers DESTINATION etc/sudoers.d RENAME mirta PERMISSIONS OWNER_READ GROUP_READ
        COMPONENT console)
install(PROGRAMS packaging/session DESTINATION usr/lib/mirta COMPONENT console)
install(FILES packaging/mirta-kiosk.service DESTINATION lib/systemd/system COMPONENT console)
install(FILES packaging/copyright DESTINATION usr/share/doc/mirta COMPONENT console)
install(FILES packaging/lintian-overrides DESTINATION usr/share/lintian/overrides RENAME mirta COMPONENT console)
mirta_install_compressed(console changelog usr/share/doc/mirta changelog)
mirta_install_compressed(console mirta.1 usr/share/man/man1 mirta.1)
mirta_install_compressed(console mirta.ru.1 usr/share/man/ru/man1 mirta.1)

# The trainer looks for the installation beside itself.
install(TARGETS mirta-proof mirta-report mirta-trainer plant RUNTIME DESTINATION ${desk} COMPONENT desk)
foreach(program mirta-proof mirta-report mirta-trainer)
  install(CODE "
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/usr/bin\")
    file(CREATE_LINK ../lib/mirta-desk/${program} \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/usr/bin/${program}\" SYMBOLIC)"
          COMPONENT desk)
  mirta_install_compressed(desk desk/${program}.1 usr/share/man/man1 ${program}.1)
endforeach()
install(FILES packaging/desk/mirta-report.desktop packaging/desk/mirta-trainer.desktop
        DESTINATION usr/share/applications COMPONENT desk)
install(FILES packaging/icons/hicolor/scalable/apps/mirta.svg DESTINATION usr/share/icons/hicolor/scalable/apps
        RENAME mirta-desk.svg COMPONENT desk)
install(FILES packaging/wireshark/mirta.lua DESTINATION usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/wireshark/plugins
        COMPONENT desk)
install(DIRECTORY tools/lesson/lessons DESTINATION usr/share/mirta-desk COMPONENT desk)
install(FILES packaging/copyright docs/instructor.ru.md docs/lessons.md docs/proof-of-weld.ru.md docs/protocols.md
              docs/replay.ru.md docs/report.ru.md docs/trainer.md
        DESTINATION usr/share/doc/mirta-desk COMPONENT desk)
install(DIRECTORY docs/pictures DESTINATION usr/share/doc/mirta-desk COMPONENT desk)
mirta_install_compressed(desk desk/changelog usr/share/doc/mirta-desk changelog)

set(MIRTA_MAINTAINER "MIRTA maintainers <maintainers@mirta.invalid>" CACHE STRING "Whom the package names for questions")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_PACKAGE_NAME mirta)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL console desk)
set(CPACK_COMPONENTS_IGNORE_GROUPS ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${MIRTA_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CONSOLE_PACKAGE_NAME mirta)
set(CPACK_DEBIAN_CONSOLE_PACKAGE_DEPENDS "adduser, fonts-dejavu-core, sudo")
set(CPACK_DEBIAN_CONSOLE_PACKAGE_RECOMMENDS "kcalc, okular, openbox, xinit, xserver-xorg")
set(CPACK_DEBIAN_CONSOLE_DESCRIPTION
    "operator console of an electron-beam welding installation
A full-screen touch program (1920 by 1200, in Russian) for the control
computer of the machine: a logged-in operator pumps down the chamber, moves
the drives, teaches a weld as a contour with a technology table, starts the
programs of three NC channels and gets a record of the run.
.
The motion controller, both vacuum controllers and the beam unit are reached
under the addresses that the program was configured with.")
foreach(script conffiles postinst prerm postrm)
  list(APPEND CPACK_DEBIAN_CONSOLE_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/${script})
endforeach()

set(CPACK_DEBIAN_DESK_PACKAGE_NAME mirta-desk)
set(CPACK_DEBIAN_DESK_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_DESK_PACKAGE_SUGGESTS "mirta, wireshark | tshark")
set(CPACK_DEBIAN_DESK_DESCRIPTION
    "programs for the people around an electron-beam welding console
The simulated installation with the whole console at work on it, lessons with
their results and the replay of captures (mirta-trainer); the proof of a weld
before the beam (mirta-proof); records of runs as curves and as a report
(mirta-report); and what names the fields of the wires in Wireshark.
.
None of them touches a machine.")
include(CPack)
