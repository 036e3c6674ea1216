include(${CMAKE_CURRENT_LIST_DIR}/nerova_polarization_processor-targets.cmake)

# Built with GCC, used with Visual C++: its linker has import libraries of its own.
if(MSVC)
  foreach(nerova_library IN ITEMS polarization_processor imaging)
    if(TARGET Nerova::${nerova_library})
      get_target_property(nerova_configurations Nerova::${nerova_library} IMPORTED_CONFIGURATIONS)
      foreach(nerova_configuration IN LISTS nerova_configurations)
        set_target_properties(Nerova::${nerova_library} PROPERTIES IMPORTED_IMPLIB_${nerova_configuration}
          ${CMAKE_CURRENT_LIST_DIR}/../../nerova_zel_${nerova_library}.lib)
      endforeach()
    endif()
  endforeach()
endif()
