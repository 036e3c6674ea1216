# What is installed: libraries, headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set_target_properties(nerova_zel_polarization_processor PROPERTIES EXPORT_NAME polarization_processor)
install(TARGETS nerova_zel_polarization_processor EXPORT nerova_polarization_processor
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Companions lie beside the library, where it looks for them.
install(TARGETS
  nerova_zel_logger
  nerova_zel_polarization_processor_vector_avx2
  nerova_zel_polarization_processor_vector_avx512
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/logger/nerova_zel_logger.cfg.sample
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nerova_zel)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/nerova_zel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/nerova_polarization_processor)
install(EXPORT nerova_polarization_processor NAMESPACE Nerova:: DESTINATION ${package_folder}
  FILE nerova_polarization_processor-targets.cmake)
file(WRITE ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config.cmake
  "include(\${CMAKE_CURRENT_LIST_DIR}/nerova_polarization_processor-targets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config.cmake
  ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor-config-version.cmake
  DESTINATION ${package_folder})

# Relative, so that an installed tree can be moved; the library folder may be more than one level deep.
file(RELATIVE_PATH way_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/nerova_polarization_processor.pc.in
  ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/nerova_polarization_processor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
