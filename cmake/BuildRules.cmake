# What every target of the project is built with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Where CMAKE_UNITY_BUILD is on, a target's sources are compiled several at a time.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 10)

# Shared libraries lie side by side, because the library looks for its companions beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(NEROVA_32_BIT ON)
else()
  set(NEROVA_32_BIT OFF)
endif()

# The flags of each instruction set. Flags from outside, such as -march=native, come before these and must not reach the
# libraries: code for an instruction set is for the processors that have been asked for it.
set(nerova_sse2_flags -march=x86-64 -mtune=generic -msse2 -mfpmath=sse
  -mno-sse3 -mno-popcnt -mno-bmi -mno-bmi2 -mno-lzcnt -mno-movbe)
set(nerova_sse41_flags ${nerova_sse2_flags} -msse4.1 -DNEROVA_SSE41_FORM)
# PREFETCHW does nothing on the processors with AVX2 that do not know it.
set(nerova_avx2_flags ${nerova_sse2_flags} -mavx2 -mfma -mprfchw)
set(nerova_avx512_flags ${nerova_sse2_flags} -mavx512f -mavx512dq -mavx512bw -mprfchw)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 takes the undefined registers that its own AVX-512 intrinsics pass along for a mistake of the caller.
  list(APPEND nerova_avx512_flags -Wno-maybe-uninitialized -Wno-uninitialized)
endif()
# Ordinary code must run, and say so, on a 32-bit processor without SSE; only the kernels and plugins use it.
if(NEROVA_32_BIT)
  set(nerova_ordinary_flags -march=i586 -mtune=generic -mfpmath=387
    -mno-sse -mno-mmx -mno-popcnt -mno-bmi -mno-bmi2 -mno-lzcnt -mno-movbe)
else()
  set(nerova_ordinary_flags ${nerova_sse2_flags})
endif()

if(WIN32)
  add_compile_definitions($<$<COMPILE_LANGUAGE:C,CXX>:WIN32_LEAN_AND_MEAN> $<$<COMPILE_LANGUAGE:C,CXX>:NOMINMAX>)
  # Nothing but the system's own DLLs beside ours: the compiler's runtime is linked in. No time in the files, so that the
  # same sources give the same bytes.
  add_link_options(-static -Wl,--no-insert-timestamp)
  if(NOT NEROVA_32_BIT)
    # GCC may place a wider vector on a stack that is aligned to 16 bytes only; its assembler can make that harmless.
    add_compile_options(-Wa,-muse-unaligned-vector-move)
  endif()
endif()
# Nor the folder in which they lay.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)

# Fused multiply-add would change results: every product and every sum is rounded.
add_compile_options(-ffp-contract=off)

if(NEROVA_SANITIZE)
  add_compile_options(-fsanitize=${NEROVA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The inserted checks hide from GCC that standard headers initialise what they read.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  add_link_options(-fsanitize=${NEROVA_SANITIZE})
endif()
if(NEROVA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "Fuzzing needs Clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# What keeps a mistake from being turned against the program that loads the libraries. Stacks are protected in the
# ordinary code only: the per-pixel code keeps no arrays there. An indirect call must land on an instruction meant for it;
# processors older than that take it for a NOP, but it needs more than the oldest that 32-bit code must live on. On
# Windows GCC's guard would draw in one more DLL.
set(nerova_guarded_stack)
if(NOT WIN32)
  set(nerova_guarded_stack -fstack-protector-strong)
  if(NOT NEROVA_32_BIT)
    add_compile_options(-fcf-protection)
  endif()
  if(NOT NEROVA_SANITIZE)
    add_compile_options("$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
endif()

# Options, texts and replies: nothing there is worth what more optimisation takes to compile.
set(nerova_seldom_run_flags)
if(NOT NEROVA_SANITIZE)
  set(nerova_seldom_run_flags $<$<CONFIG:Release>:-O1>)
endif()

if(NEROVA_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# The lanes code is thousands of values in registers, none an array on the stack: to guard each as one would take minutes
# to compile and find nothing. One sanitizer build watches it, the one that runs every route: Clang's, where instrumenting
# it costs least. Left out there are checks of pointers that the address sanitizer makes anyway. Elsewhere sanitizers
# watch what calls it; it has no state of its own.
set(nerova_lanes_flags ${NEROVA_LANES_OPTIMIZATION})
set(nerova_watched_rows)
set(nerova_unwatched_lanes_flags)
if(NEROVA_FUZZ)
  # No coverage either: the code has no decisions that an input could lead to.
  set(nerova_lanes_flags -O1 -g1 "SHELL:-mllvm -asan-stack=0" -fno-sanitize=fuzzer-no-link
    -fno-sanitize=null,object-size,pointer-overflow)
  set(nerova_watched_rows default_rows_0|avx2_calibrated_rows)
  set(nerova_unwatched_lanes_flags -g0 -fno-sanitize=all -fno-sanitize=fuzzer-no-link)
elseif(NEROVA_SANITIZE)
  # The second flag makes GCC leave the wide registers clean.
  set(nerova_lanes_flags -O1 -fexpensive-optimizations -g0 -fno-sanitize=all)
elseif(NEROVA_COVERAGE)
  set(nerova_watched_rows calibrated_rows|ordinary_rows|default_rows_0)
  set(nerova_unwatched_lanes_flags -fno-profile-arcs -fno-test-coverage)
endif()

# A sanitizer's functions come with the program, so its libraries must be allowed to leave them undefined.
if(NEROVA_SANITIZE)
  set(NEROVA_NO_UNDEFINED)
else()
  set(NEROVA_NO_UNDEFINED -Wl,--no-undefined)
endif()

# nerova_find(package version part switch debian): finds what an optional part needs, or says how to do without.
function(nerova_find package version part switch debian)
  if(TARGET ${package}::${package})
    return()
  endif()
  find_package(${package} ${version} QUIET)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR
      "${package} is missing, which ${part} needs. Install ${debian} (Debian), or leave it out with -D${switch}=OFF.")
  endif()
endfunction()

# nerova_add_objects(name set sources...): an object library for one instruction set: ordinary, sse2, sse41, avx2 or
# avx512. The global property nerova_objects_<set> lists them, for the checks of what the built files hold.
function(nerova_add_objects name set)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/polarization_processor)
  target_compile_options(${name} PRIVATE ${nerova_${set}_flags})
  nerova_set_warnings(${name})
  set_property(GLOBAL APPEND PROPERTY nerova_objects_${set} ${name})
endfunction()

# nerova_library_rules(target description def): what the processor's library and its companions have in common: ordinary
# code, and the rules for all shared libraries.
function(nerova_library_rules target description def)
  target_compile_options(${target} PRIVATE ${nerova_ordinary_flags} ${nerova_guarded_stack})
  set_property(GLOBAL APPEND PROPERTY nerova_objects_ordinary ${target})
  nerova_shared_library_rules(${target} "${description}" ${def})
endfunction()

# nerova_shared_library_rules(target description def): what all shared libraries that are shipped have in common. They
# export the names in the .def file on Windows and in exports.map beside the sources elsewhere, and nothing else.
function(nerova_shared_library_rules target description def)
  if(WIN32)
    target_sources(${target} PRIVATE ${def})
    set(NEROVA_FILE_DESCRIPTION ${description})
    set(NEROVA_FILE_NAME ${target})
    set(NEROVA_FILE_TYPE VFT_DLL)
    set(NEROVA_FILE_EXTENSION dll)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_link_options(${target} PRIVATE -s -Wl,--dynamicbase,--nxcompat)
    if(NOT NEROVA_32_BIT)
      target_link_options(${target} PRIVATE -Wl,--high-entropy-va)
    endif()
  else()
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/version_note.c)
    # On its own, so that the checks of what the objects hold know it by its name.
    set_source_files_properties(${PROJECT_SOURCE_DIR}/cmake/version_note.c TARGET_DIRECTORY ${target}
      PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    target_compile_definitions(${target} PRIVATE NEROVA_VERSION="${PROJECT_VERSION}")
    set(map ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)
    if(EXISTS ${map})
      target_link_options(${target} PRIVATE -Wl,--version-script=${map})
      set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
    endif()
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack,-z,text ${NEROVA_NO_UNDEFINED})
  endif()
endfunction()

# nerova_windows_program(target description): what a program needs that is shipped for Windows: its version, and a
# manifest that lets it take long paths.
function(nerova_windows_program target description)
  set(NEROVA_FILE_DESCRIPTION ${description})
  set(NEROVA_FILE_NAME ${target})
  set(NEROVA_FILE_TYPE VFT_APP)
  set(NEROVA_FILE_EXTENSION exe)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc
    ${PROJECT_SOURCE_DIR}/cmake/windows_program/manifest.rc)
  set_source_files_properties(${PROJECT_SOURCE_DIR}/cmake/windows_program/manifest.rc PROPERTIES
    OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/windows_program/program.manifest)
  target_link_options(${target} PRIVATE -municode -s -Wl,--dynamicbase,--nxcompat)
  if(NOT NEROVA_32_BIT)
    target_link_options(${target} PRIVATE -Wl,--high-entropy-va)
  endif()
endfunction()

# nerova_short_import_library(target): for a Windows library also <target>.lib, an import library in the short format
# that Visual C++ makes and takes. For x86 a linker of that kind refuses the GNU linker's own (/safeseh).
function(nerova_short_import_library target)
  find_program(NEROVA_LLVM_DLLTOOL llvm-dlltool REQUIRED)
  if(NEROVA_32_BIT)
    set(machine i386)
  else()
    set(machine i386:x86-64)
  endif()
  set(library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.lib)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${NEROVA_LLVM_DLLTOOL}
      -m ${machine} -d ${CMAKE_CURRENT_SOURCE_DIR}/${target}.def -D ${target}.dll -l ${library}
    BYPRODUCTS ${library} VERBATIM)
  set_target_properties(${target} PROPERTIES NEROVA_SHORT_IMPORT_LIBRARY ${library})
endfunction()

# nerova_set_warnings(target): the warnings of all our own code; third-party sources are built without them.
function(nerova_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wundef
    -Wcast-align -Wformat=2 $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Wextra-semi>)
  if(CMAKE_UNITY_BUILD)
    # Between two sources that are compiled as one, neither means anything.
    target_compile_options(${target} PRIVATE -Wno-shadow
      $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
  endif()
  if(NEROVA_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
