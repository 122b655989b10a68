# SPDX-License-Identifier: GPL-3.0-or-later
# What `cmake --install` installs, and where.
include(GNUInstallDirs)

set(private_libraries lib/${CMAKE_LIBRARY_ARCHITECTURE}/brimwellpro)
set_target_properties(brimwellpro PROPERTIES INSTALL_RPATH "$ORIGIN/../${private_libraries}")
install(TARGETS brimwellpro RUNTIME)
install(TARGETS bw_movies LIBRARY DESTINATION ${private_libraries})

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
# udev's folder; under a prefix other than /usr and /usr/local, link it from /etc/udev/rules.d by hand.
install(FILES ${packaging}/udev/70-brimwellpro.rules DESTINATION lib/udev/rules.d)
install(FILES ${packaging}/brimwellpro.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/example.brimwellpro.brimwellpro.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
install(FILES ${packaging}/completion/brimwellpro.bash RENAME brimwellpro
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${packaging}/completion/brimwellpro.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES ${packaging}/completion/_brimwellpro DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${packaging}/man/brimwellpro.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

set(documents ${CMAKE_INSTALL_DATADIR}/doc/brimwellpro)
set(guides docs/FIRST-STEPS.md docs/SCOPES.md docs/MEASURING.md docs/CAMERAS.md docs/TECHNICIAN.md docs/METADATA.md)
install(FILES CHANGELOG.md docs/LICENCES.md ${guides} DESTINATION ${documents})
foreach(guide ${guides}) # with the pictures that they show
    file(READ ${guide} text)
    string(REGEX MATCHALL "images/[a-z0-9-]+\\.(png|jpg)" shown "${text}")
    list(TRANSFORM shown PREPEND docs/)
    install(FILES ${shown} DESTINATION ${documents}/images)
endforeach()
