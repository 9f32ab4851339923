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
