# What the Debian package holds, and the package itself: `cpack` in the build folder makes it.
# The station's own files (rule lists, Morse table, fill text, settings, queues) are its operator's:
# the package carries them as a starting set, and its postinst lays down what is missing.
# The core runs a station without windows; what needs a window system is a package of its own.
set(core_programs ostrel-feed ostrel-headless ostrel-monitor ostrel-queue ostrel-repeat ostrel-settings
    ostrel-simulate ostrel-status ostrel-watch)
function(ostrel_install_programs component)
  install(TARGETS ${ARGN} DESTINATION opt/ostrel COMPONENT ${component})
  foreach(program ${ARGN})
    install(CODE "
      set(links \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/usr/bin\")
      file(MAKE_DIRECTORY \"\${links}\")
      file(CREATE_LINK /opt/ostrel/${program} \"\${links}/${program}\" SYMBOLIC)"
      COMPONENT ${component})
  endforeach()
endfunction()
ostrel_install_programs(core ${core_programs})
ostrel_install_programs(windows ostrel)
# The companion programs that a station starts: the feed under their names, and the program with their
# window, which nobody calls by its own.
install(FILES ${CMAKE_BINARY_DIR}/bin/Brask ${CMAKE_BINARY_DIR}/bin/Tiltor DESTINATION opt/ostrel
        COMPONENT core)
install(TARGETS ostrel-ingest DESTINATION opt/ostrel COMPONENT windows)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/packaging/station/ DESTINATION usr/share/ostrel/station
        COMPONENT core)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/system/ostrel@.service
              ${CMAKE_SOURCE_DIR}/packaging/system/ostrel-feed@.service
              ${CMAKE_SOURCE_DIR}/packaging/system/ostrel-monitor@.service
              ${CMAKE_SOURCE_DIR}/packaging/system/ostrel-repeat@.service
              ${CMAKE_SOURCE_DIR}/packaging/system/ostrel-status@.service
        DESTINATION usr/lib/systemd/system COMPONENT core)

install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/ostrel.desktop
        DESTINATION usr/share/applications COMPONENT windows)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/example.corvain.Ostrel.metainfo.xml
        DESTINATION usr/share/metainfo COMPONENT windows)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/desktop/ostrel.service
        DESTINATION usr/lib/systemd/user COMPONENT windows)
foreach(size 48 64 128)
  install(FILES ${CMAKE_SOURCE_DIR}/ui/icons/ostrel-${size}.png COMPONENT windows
          DESTINATION usr/share/icons/hicolor/${size}x${size}/apps RENAME ostrel.png)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/ui/icons/ostrel.svg COMPONENT windows
        DESTINATION usr/share/icons/hicolor/scalable/apps)

# What teaches a shell the words of a program, by the program itself.
function(ostrel_install_completion shell destination prefix suffix)
  foreach(program ${core_programs})
    if(program STREQUAL ostrel-headless)  # it takes no words
      continue()
    endif()
    set(file ${CMAKE_BINARY_DIR}/completions/${prefix}${program}${suffix})
    add_custom_command(
      OUTPUT ${file} DEPENDS ${program}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/completions
      COMMAND ${program} --completion ${shell} > ${file})
    list(APPEND files ${file})
    install(FILES ${file} DESTINATION ${destination} COMPONENT core)
  endforeach()
  add_custom_target(completions_${shell} ALL DEPENDS ${files})
endfunction()
ostrel_install_completion(bash usr/share/bash-completion/completions "" "")
ostrel_install_completion(zsh usr/share/zsh/vendor-completions "_" "")
ostrel_install_completion(fish usr/share/fish/vendor_completions.d "" ".fish")

# Packed at build time, without a time stamp, so that the same sources make the same package.
function(ostrel_install_packed file name destination component)
  set(packed ${CMAKE_BINARY_DIR}/packed/${name}.gz)
  if(NOT TARGET packed_${name})
    add_custom_command(
      OUTPUT ${packed} DEPENDS ${file}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packed
      COMMAND gzip -n9c ${file} > ${packed})
    add_custom_target(packed_${name} ALL DEPENDS ${packed})
  endif()
  install(FILES ${packed} DESTINATION ${destination} COMPONENT ${component})
endfunction()
function(ostrel_install_pages component)
  foreach(page ${ARGN})
    string(REGEX REPLACE ".*\\." "man" section ${page})
    ostrel_install_packed(${CMAKE_SOURCE_DIR}/packaging/man/${page} ${page} usr/share/man/${section}
                          ${component})
  endforeach()
endfunction()
ostrel_install_pages(core ostrel-feed.1 ostrel-headless.1 ostrel-monitor.1 ostrel-queue.1 ostrel-repeat.1 ostrel-settings.1
                     ostrel-simulate.1 ostrel-status.1 ostrel-watch.1 ostrel-rules.5)
ostrel_install_pages(windows ostrel.1)

function(ostrel_install_documents component package)
  set(doc usr/share/doc/${package})
  ostrel_install_packed(${CMAKE_SOURCE_DIR}/packaging/debian/changelog changelog ${doc} ${component})
  ostrel_install_packed(${CMAKE_SOURCE_DIR}/CHANGELOG.md NEWS ${doc} ${component})
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/debian/copyright DESTINATION ${doc}
          COMPONENT ${component})
  file(READ ${CMAKE_SOURCE_DIR}/packaging/debian/lintian-overrides overrides)
  string(REPLACE "PACKAGE" ${package} overrides "${overrides}")
  file(WRITE ${CMAKE_BINARY_DIR}/overrides/${package} "${overrides}")
  install(FILES ${CMAKE_BINARY_DIR}/overrides/${package} DESTINATION usr/share/lintian/overrides
          COMPONENT ${component})
endfunction()
ostrel_install_documents(core ostrel-core)
ostrel_install_documents(windows ostrel)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs DESTINATION usr/share/doc/ostrel-core COMPONENT core)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrel)
set(CPACK_PACKAGE_VENDOR Corvain)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL core windows)
set(CPACK_COMPONENT_WINDOWS_DEPENDS core)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Corvain <support@corvain.example>")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.corvain.example/)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CORE_PACKAGE_NAME ostrel-core)
set(CPACK_DEBIAN_CORE_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_CORE_PACKAGE_DEPENDS passwd)
# Programs and documents that one package held.
set(CPACK_DEBIAN_CORE_PACKAGE_BREAKS "ostrel (<< ${PROJECT_VERSION})")
set(CPACK_DEBIAN_CORE_PACKAGE_REPLACES "ostrel (<< ${PROJECT_VERSION})")
set(CPACK_DEBIAN_CORE_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/debian/postinst ${CMAKE_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_CORE_DESCRIPTION
    "retransmission of EMWIN weather products over radio
Ostrel takes the weather products that a receiver of the EMWIN service drops
into a folder, routes each by its name into ten priorities, and sends them,
most urgent first, as one continuous stream of packets over a serial line
that also keys the transmitter, and as datagrams.
.
This package is a station without windows, for a machine that runs alone, with
a watch over it, its status for people, browsers and monitoring, its settings
on the command line, a receiver, and a simulation of a day's arrivals.")

set(CPACK_DEBIAN_WINDOWS_PACKAGE_NAME ostrel)
set(CPACK_DEBIAN_WINDOWS_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_CORE_PACKAGE_RECOMMENDS "ca-certificates")
set(CPACK_DEBIAN_WINDOWS_PACKAGE_RECOMMENDS "fonts-liberation, xdg-utils")
set(CPACK_DEBIAN_WINDOWS_DESCRIPTION
    "retransmission of EMWIN weather products over radio, with windows
The station of ostrel-core with its windows: the queues and what is on the
air, and the dialog for settings, rules and schedule.")
include(CPack)
