# Target `goi`: dist/Tovira.app. Target `dmg`: the same on a disk image.
set(TOVIRA_CHU_KY "" CACHE STRING
    "Signing identity; empty: the certificate of tao-chung-chi-ky.sh if there is one, else ad hoc")

configure_file(macos/Info.plist.in ${CMAKE_BINARY_DIR}/Info.plist @ONLY)

set(goi ${CMAKE_SOURCE_DIR}/dist/Tovira.app)
add_custom_target(goi
    COMMAND ${CMAKE_COMMAND}
        -D goi=${goi}
        -D chuong_trinh=$<TARGET_FILE:tovira>
        -D nguon=${CMAKE_SOURCE_DIR}
        -D dung=${CMAKE_BINARY_DIR}
        -D chu_ky=${TOVIRA_CHU_KY}
        -P ${CMAKE_SOURCE_DIR}/cmake/dong-goi-macos.cmake
    DEPENDS tovira
    COMMENT "Packing ${goi}"
    VERBATIM)

set(dmg ${CMAKE_SOURCE_DIR}/dist/Tovira-${PROJECT_VERSION}.dmg)
add_custom_target(dmg
    COMMAND hdiutil create -quiet -ov -volname Tovira -srcfolder ${goi} -format UDZO ${dmg}
    DEPENDS goi
    COMMENT "Packing ${dmg}"
    VERBATIM)
