include(${CMAKE_CURRENT_LIST_DIR}/nerova_polarization_processor-targets.cmake)

# Built with GCC, used with Visual C++: its linker has an import library of its own.
if(MSVC)
  get_target_property(nerova_configurations Nerova::polarization_processor IMPORTED_CONFIGURATIONS)
  foreach(nerova_configuration IN LISTS nerova_configurations)
    set_target_properties(Nerova::polarization_processor PROPERTIES IMPORTED_IMPLIB_${nerova_configuration}
      ${CMAKE_CURRENT_LIST_DIR}/../../nerova_zel_polarization_processor.lib)
  endforeach()
endif()
