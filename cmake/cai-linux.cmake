# What a Linux desktop expects of an installed program. The icons are drawn by the program itself.
include(GNUInstallDirs)
set(boIcon ${CMAKE_BINARY_DIR}/Tovira.iconset)
add_custom_command(OUTPUT ${boIcon}/icon_512x512@2x.png
    COMMAND tovira --tao-icon ${boIcon}
    DEPENDS tovira VERBATIM
)
add_custom_target(icon_linux ALL DEPENDS ${boIcon}/icon_512x512@2x.png)

install(TARGETS tovira DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY resources/giao-dien DESTINATION ${CMAKE_INSTALL_DATADIR}/tovira)
install(FILES linux/tovira.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
function(cai_icon canh tep)
    install(FILES ${boIcon}/${tep}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${canh}x${canh}/apps RENAME tovira.png)
endfunction()
cai_icon(16 icon_16x16.png)
cai_icon(32 icon_32x32.png)
cai_icon(64 icon_32x32@2x.png)
cai_icon(128 icon_128x128.png)
cai_icon(256 icon_256x256.png)
cai_icon(512 icon_512x512.png)
install(FILES ${CMAKE_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tovira)
install(FILES ${CMAKE_BINARY_DIR}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tovira)

# Debian wants to know of every file under which licence it is, and what changed.
file(READ LICENSE giayPhep)
string(REGEX REPLACE "\n\n" "\n.\n" giayPhep "${giayPhep}")
string(REGEX REPLACE "\n(.)" "\n \\1" giayPhep "${giayPhep}")
file(WRITE ${CMAKE_BINARY_DIR}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: Tovira

Files: *
Copyright: 2026 The Tovira authors
License: Expat

License: Expat
 ${giayPhep}")
file(WRITE ${CMAKE_BINARY_DIR}/changelog
"tovira (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}.

 -- The Tovira authors <tovira@tovira.example>  Thu, 01 Jan 2026 00:00:00 +0000
")
execute_process(COMMAND gzip -9 -n -f ${CMAKE_BINARY_DIR}/changelog COMMAND_ERROR_IS_FATAL ANY)

# cmake --build build/release --target package
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tovira)
set(CPACK_PACKAGE_VENDOR "The Tovira authors")
set(CPACK_PACKAGE_CONTACT "The Tovira authors <tovira@tovira.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "peer-to-peer remote-control host")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Lets another person see this computer's screen, move its mouse, type on its
keyboard and send it files, directly from machine to machine. While that
lasts a red bar stands above every window; one press on it ends it at once.
.
Works in an X11 session.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# What the program is linked with names itself; the rest it only meets at run time: a certificate store for the
# server, a font with Vietnamese letters.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ca-certificates, fonts-dejavu-core | fonts-noto-core | ttf-font")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils")
include(CPack)
