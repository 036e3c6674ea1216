# What the tool needs on Windows: the libraries of scripts/install-windows-libraries, and libraries of headers alone, of
# which only their own folders are put before the compiler: it must not see this system's other headers.

if(NEROVA_32_BIT)
  set(architecture x86)
else()
  set(architecture x64)
endif()
set(cache $ENV{XDG_CACHE_HOME})
if(NOT cache)
  set(cache $ENV{HOME}/.cache)
endif()
set(NEROVA_WINDOWS_LIBRARIES ${cache}/nerova-zel/windows-libraries/${architecture} CACHE PATH
  "Where scripts/install-windows-libraries puts zlib, libpng, libtiff and OpenCV")

# nerova_header_library(target header): a target that gives a library of headers in a folder of the same name.
function(nerova_header_library target header)
  get_filename_component(folder ${header} DIRECTORY)
  find_path(NEROVA_${folder}_HEADERS ${header} NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include /usr/local/include)
  if(NOT NEROVA_${folder}_HEADERS)
    return()
  endif()
  set(alone ${CMAKE_BINARY_DIR}/header_libraries/${folder})
  file(MAKE_DIRECTORY ${alone})
  file(CREATE_LINK ${NEROVA_${folder}_HEADERS}/${folder} ${alone}/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${alone})
endfunction()

if(EXISTS ${NEROVA_WINDOWS_LIBRARIES}/recipe)
  list(PREPEND CMAKE_FIND_ROOT_PATH ${NEROVA_WINDOWS_LIBRARIES})
  set(OpenCV_DIR ${NEROVA_WINDOWS_LIBRARIES})
  nerova_header_library(CLI11::CLI11 CLI/CLI.hpp)
  nerova_header_library(nlohmann_json::nlohmann_json nlohmann/json.hpp)
else()
  message(NOTICE "Not built: nerova-polarize and its tests, whose libraries scripts/install-windows-libraries builds")
  set(NEROVA_BUILD_TOOLS OFF)
endif()
