# Windows x86 from a Debian host.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(triplet i686-w64-mingw32)
set(wine_bits 32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
