# 32-bit x86 Linux from a 64-bit Debian host with g++-multilib. Runs on the host, so this is no cross build to CMake.
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE "i386-linux-gnu")
