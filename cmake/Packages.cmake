# Packages by CPack: a zip of everything for Windows; for Debian the libraries, what is needed to build with them, the
# tool and the plugin for GStreamer. One version is installed at a time, so that the libraries can keep the plain names
# by which programs load them.
set(CPACK_PACKAGE_NAME ${NEROVA_PACKAGE_NAME})
set(CPACK_PACKAGE_VENDOR "Nerova Zel")
set(CPACK_PACKAGE_CONTACT "Nerova Zel")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/packages/settle.cmake)

if(WIN32)
  set(CPACK_GENERATOR External)
  set(CPACK_MONOLITHIC_INSTALL ON)
  set(CPACK_EXTERNAL_ENABLE_STAGING ON)
  set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/packages/zip.cmake)
  if(NEROVA_32_BIT)
    set(CPACK_SYSTEM_NAME windows-x86)
  else()
    set(CPACK_SYSTEM_NAME windows-x64)
  endif()
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # else it would head the description of every component
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_COMPONENTS_ALL runtime development)
  set(this_version "(= ${PROJECT_VERSION})")

  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME lib${NEROVA_PACKAGE_NAME})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}
 The library, its code for AVX2 and AVX-512, its logger, and imaging for other languages.")
  if(NEROVA_32_BIT)
    # Built where the packages of this architecture are not known; from the versions of the symbols that are used.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 11)")
  else()
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  endif()

  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME lib${NEROVA_PACKAGE_NAME}-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "lib${NEROVA_PACKAGE_NAME} ${this_version}")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} - development
 Header, CMake package, pkg-config file, examples and documents.")

  if(NEROVA_BUILD_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL tool)
    set(CPACK_DEBIAN_TOOL_PACKAGE_NAME nerova-polarize)
    set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
    set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "lib${NEROVA_PACKAGE_NAME} ${this_version}")
    set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
    if(NEROVA_BUILD_CAMERAS)
      set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS libaravis-0.8-0)  # loaded by record
    endif()
    set(CPACK_COMPONENT_TOOL_DESCRIPTION "${PROJECT_DESCRIPTION} - command
 Reads frames from image files, writes images and a sheet of pictures; simulates frames.")
  endif()

  if(NEROVA_BUILD_GSTREAMER)
    list(APPEND CPACK_COMPONENTS_ALL gstreamer)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_NAME gstreamer1.0-nerova-zel)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_DEPENDS "lib${NEROVA_PACKAGE_NAME} ${this_version}")
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SHLIBDEPS ON)
    set(CPACK_COMPONENT_GSTREAMER_DESCRIPTION "${PROJECT_DESCRIPTION} - GStreamer plugin
 Elements that turn the frames of a polarization camera into power, angle and degree while it runs.")
  endif()
endif()

include(CPack)
