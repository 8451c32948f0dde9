# What the Debian package holds, and the package itself: `cpack` in the build folder makes it.
# The station's own files (rule lists, Morse table, fill text, settings, queues) are its operator's:
# the package carries them as a starting set, and its postinst lays down what is missing.
set(doc usr/share/doc/ostrel)

install(TARGETS ostrel ostrel-monitor ostrel-settings ostrel-simulate DESTINATION opt/ostrel)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/packaging/station/ DESTINATION usr/share/ostrel/station)
foreach(program ostrel ostrel-monitor ostrel-settings ostrel-simulate)
  install(CODE "
    set(links \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/usr/bin\")
    file(MAKE_DIRECTORY \"\${links}\")
    file(CREATE_LINK /opt/ostrel/${program} \"\${links}/${program}\" SYMBOLIC)")
endforeach()

install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/ostrel.desktop
        DESTINATION usr/share/applications)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/example.corvain.Ostrel.metainfo.xml
        DESTINATION usr/share/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/ostrel.service
        DESTINATION usr/lib/systemd/user)
foreach(size 48 64 128)
  install(FILES ${CMAKE_SOURCE_DIR}/ui/icons/ostrel-${size}.png
          DESTINATION usr/share/icons/hicolor/${size}x${size}/apps RENAME ostrel.png)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/ui/icons/ostrel.svg
        DESTINATION usr/share/icons/hicolor/scalable/apps)

# Packed at build time, without a time stamp, so that the same sources make the same package.
function(ostrel_install_packed file name destination)
  set(packed ${CMAKE_BINARY_DIR}/packed/${name}.gz)
  add_custom_command(
    OUTPUT ${packed} DEPENDS ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packed
    COMMAND gzip -n9c ${file} > ${packed})
  set_property(TARGET packed_documents APPEND PROPERTY SOURCES ${packed})
  install(FILES ${packed} DESTINATION ${destination})
endfunction()
add_custom_target(packed_documents ALL)
foreach(page ostrel.1 ostrel-monitor.1 ostrel-settings.1 ostrel-simulate.1 ostrel-rules.5)
  string(REGEX REPLACE ".*\\." "man" section ${page})
  ostrel_install_packed(${CMAKE_SOURCE_DIR}/packaging/man/${page} ${page}
                        usr/share/man/${section})
endforeach()
ostrel_install_packed(${CMAKE_SOURCE_DIR}/packaging/debian/changelog changelog ${doc})
ostrel_install_packed(${CMAKE_SOURCE_DIR}/CHANGELOG.md NEWS ${doc})

install(FILES ${CMAKE_SOURCE_DIR}/packaging/debian/copyright DESTINATION ${doc})
install(FILES ${CMAKE_SOURCE_DIR}/packaging/debian/lintian-overrides
        DESTINATION usr/share/lintian/overrides RENAME ostrel)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs DESTINATION ${doc})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrel)
set(CPACK_PACKAGE_VENDOR Corvain)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Corvain <support@corvain.example>")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.corvain.example/)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS passwd)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-liberation, xdg-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "retransmission of EMWIN weather products over radio")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Ostrel takes the weather products that a receiver of the EMWIN service drops
into a folder, routes each by its name into ten priorities, and sends them,
most urgent first, as one continuous stream of packets over a serial line
that also keys the transmitter, and as datagrams.

A receiver, the settings on the command line and a simulation of the station
over a day's arrivals come along.")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/debian/postinst ${CMAKE_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
