# The portable libraries, each as one target tovira::<name>. All of them exist in Debian and in Homebrew.
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(tovira_asio INTERFACE)
target_include_directories(tovira_asio SYSTEM INTERFACE ${ASIO_INCLUDE_DIR})
target_compile_definitions(tovira_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(tovira_asio INTERFACE Threads::Threads)
add_library(tovira::asio ALIAS tovira_asio)

find_path(FAST_FLOAT_INCLUDE_DIR fast_float/fast_float.h REQUIRED)
add_library(tovira_fast_float INTERFACE)
target_include_directories(tovira_fast_float SYSTEM INTERFACE ${FAST_FLOAT_INCLUDE_DIR})
add_library(tovira::fast_float ALIAS tovira_fast_float)

pkg_check_modules(utf8proc REQUIRED IMPORTED_TARGET libutf8proc)
pkg_check_modules(uriparser REQUIRED IMPORTED_TARGET liburiparser)
pkg_check_modules(spng REQUIRED IMPORTED_TARGET spng)
add_library(tovira::utf8proc ALIAS PkgConfig::utf8proc)
add_library(tovira::uriparser ALIAS PkgConfig::uriparser)
add_library(tovira::spng ALIAS PkgConfig::spng)
