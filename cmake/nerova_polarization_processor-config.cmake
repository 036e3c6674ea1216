include(${CMAKE_CURRENT_LIST_DIR}/nerova_polarization_processor-targets.cmake)

# Built with GCC, used with Visual C++ or Clang for its target: their linkers have import libraries of their own.
if(WIN32 AND NOT MINGW)
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
