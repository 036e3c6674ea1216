# Windows x64 from a Debian host.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(triplet x86_64-w64-mingw32)
set(wine_bits 64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
