# Run by CPack's external generator on the folder that it packs. CPack's own zips hold the files in the order in which the
# file system lists them, and their owner.
set(contents zip)
if(EXISTS ${CPACK_TEMPORARY_DIRECTORY}/bin/nerova-polarize.exe)
  list(APPEND contents ${CPACK_NEROVA_WINDOWS_LIBRARIES})
endif()
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../../scripts/internal/notices ${contents}
  OUTPUT_FILE ${CPACK_TEMPORARY_DIRECTORY}/NOTICES COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{TZ} UTC)
  file(GLOB_RECURSE files LIST_DIRECTORIES false ${CPACK_TEMPORARY_DIRECTORY}/*)
  execute_process(COMMAND touch --date=@$ENV{SOURCE_DATE_EPOCH} ${files} COMMAND_ERROR_IS_FATAL ANY)
endif()
cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH parent)
file(GLOB_RECURSE names LIST_DIRECTORIES false RELATIVE ${parent} ${CPACK_TEMPORARY_DIRECTORY}/*)
list(SORT names)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${CPACK_TEMPORARY_DIRECTORY}.zip)
file(REMOVE ${CPACK_EXTERNAL_BUILT_PACKAGES})
execute_process(COMMAND zip -q -X ${CPACK_EXTERNAL_BUILT_PACKAGES} ${names}
  WORKING_DIRECTORY ${parent} COMMAND_ERROR_IS_FATAL ANY)
