# Clang and LLD in the place of Visual C++, with its command line. NEROVA_TARGET: x86_64-pc-windows-msvc or
# i686-pc-windows-msvc.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES NEROVA_TARGET)
find_program(NEROVA_CLANG_CL NAMES clang-cl clang-cl-14 REQUIRED)
find_program(NEROVA_LLD_LINK NAMES lld-link lld-link-14 REQUIRED)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${NEROVA_CLANG_CL})
set(CMAKE_CXX_COMPILER ${NEROVA_CLANG_CL})
set(CMAKE_C_COMPILER_TARGET ${NEROVA_TARGET})
set(CMAKE_CXX_COMPILER_TARGET ${NEROVA_TARGET})
set(CMAKE_LINKER ${NEROVA_LLD_LINK})
# No resources and no manifest.
set(CMAKE_RC_COMPILER true)
set(CMAKE_MT true)
# Nothing of Visual C++'s own is there to link with.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_C_STANDARD_LIBRARIES "" CACHE STRING "")
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "")
# ccache writes no object for this command line, whatever the environment says.
set(CMAKE_C_COMPILER_LAUNCHER "" CACHE STRING "")
set(CMAKE_CXX_COMPILER_LAUNCHER "" CACHE STRING "")
