# What is installed, in components: runtime has the libraries, tool and gstreamer what their names say, development all
# else. Packages for Debian are divided otherwise, in debian/*.install.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

set_target_properties(nerova_zel_polarization_processor PROPERTIES EXPORT_NAME polarization_processor)
install(TARGETS nerova_zel_polarization_processor EXPORT nerova_polarization_processor
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Nothing links with the companions, so they lie in a folder below the library's, where it looks for them too.
set(companions nerova_zel_logger ${nerova_plugin_libraries})
if(TARGET nerova_zel_imaging)
  set_target_properties(nerova_zel_imaging PROPERTIES EXPORT_NAME imaging)
  install(TARGETS nerova_zel_imaging EXPORT nerova_polarization_processor
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(TARGETS ${companions}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/nerova_zel COMPONENT runtime
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/logger/nerova_zel_logger.cfg.sample
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nerova_zel COMPONENT runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/nerova_zel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(WIN32)
  set(linked nerova_zel_polarization_processor)
  if(TARGET nerova_zel_imaging)
    list(APPEND linked nerova_zel_imaging)
  endif()
  foreach(library IN LISTS linked)
    install(FILES $<TARGET_PROPERTY:${library},NEROVA_SHORT_IMPORT_LIBRARY> DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endforeach()
  foreach(library IN ITEMS ${linked} ${companions})
    get_target_property(folder ${library} SOURCE_DIR)
    install(FILES ${folder}/${library}.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endforeach()
endif()

if(TARGET gstnerovazel)
  install(TARGETS gstnerovazel LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer)
endif()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/nerova_polarization_processor)
install(EXPORT nerova_polarization_processor NAMESPACE Nerova:: DESTINATION ${package_folder}
  FILE nerova_polarization_processor-targets.cmake)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_SOURCE_DIR}/cmake/nerova_polarization_processor-config.cmake
  ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config-version.cmake
  DESTINATION ${package_folder})

# Relative, so that an installed tree can be moved; the library folder may be more than one level deep.
file(RELATIVE_PATH way_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/nerova_polarization_processor.pc.in
  ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What is to be read. A Windows package is a folder of its own, with that at its top.
include(packages/readme)
if(WIN32)
  set(documents_folder .)
  set(installing windows)
else()
  set(documents_folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/lib${NEROVA_PACKAGE_NAME}-doc)
  set(installing debian)
endif()
nerova_packaged_readme(${CMAKE_BINARY_DIR}/package/README.md
  ${CMAKE_CURRENT_LIST_DIR}/packages/installing_${installing}.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
install(FILES ${CMAKE_BINARY_DIR}/package/README.md CHANGELOG.md SECURITY.md LICENSE DESTINATION ${documents_folder})
install(DIRECTORY docs examples DESTINATION ${documents_folder} PATTERN developer EXCLUDE)
# As sources: users build it for their .NET.
install(DIRECTORY bindings/dotnet DESTINATION ${documents_folder}/bindings PATTERN CMakeLists.txt EXCLUDE)
if(NOT WIN32)
  # The documents refer to the headers as they lie in the source tree and in a Windows package.
  file(RELATIVE_PATH way_to_headers /prefix/${documents_folder} /prefix/${CMAKE_INSTALL_INCLUDEDIR})
  install(CODE "file(CREATE_LINK ${way_to_headers}
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${documents_folder}/include\" SYMBOLIC)")
endif()
