# SPDX-License-Identifier: GPL-3.0-or-later
# The Debian package, made by tools/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brimwellpro)
set(CPACK_PACKAGE_VENDOR BrimwellPro)
set(CPACK_PACKAGE_HOMEPAGE_URL https://www.brimwellpro.example/)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/package)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "BrimwellPro maintainers <maintainers@brimwellpro.example>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "viewer and capture program for digital microscopes")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Shows the live image of a USB digital microscope, dermatoscope, otoscope or
wireless camera, zoomed, rotated and mirrored as you like, with a calibrated
measuring grid for dermatoscopes.

Snapshots and movies are taken with a key or with the button on the camera,
and land in albums, which are plain folders of JPEG pictures and QuickTime
movies.")

# dpkg-shlibdeps finds the linked libraries. Of what is loaded at run time the program depends only on the icons, without
# which half of the buttons would be empty. Without the recommended packages Wayland sessions need an X server, Qt's own
# texts are English, and captures and web pages cannot be opened.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS breeze-icon-theme)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n, qt6-wayland, xdg-utils")

set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/postinst)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
include(CPack)
