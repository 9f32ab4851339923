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
    COMMENT "Packing ${goi}"
    VERBATIM)
add_dependencies(goi tovira)

set(anh ${CMAKE_BINARY_DIR}/anh-dia)
set(dmg ${CMAKE_SOURCE_DIR}/dist/Tovira-${PROJECT_VERSION}.dmg)
set(ky_dmg)
if(TOVIRA_CHU_KY)
    set(ky_dmg COMMAND codesign --force --sign ${TOVIRA_CHU_KY} --timestamp ${dmg})
endif()
add_custom_target(dmg
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${anh}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${anh}
    COMMAND ditto ${goi} ${anh}/Tovira.app
    COMMAND ${CMAKE_COMMAND} -E create_symlink /Applications ${anh}/Applications
    COMMAND hdiutil create -quiet -ov -volname Tovira -srcfolder ${anh} -format UDZO ${dmg}
    ${ky_dmg}
    COMMENT "Packing ${dmg}"
    VERBATIM)
add_dependencies(dmg goi)
