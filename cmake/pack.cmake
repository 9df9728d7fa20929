# Packs what CPack has laid out into an archive that is the same wherever and whenever it is made: sorted, nobody's files,
# all times those of SOURCE_DATE_EPOCH.
set(archive ${CPACK_TOPLEVEL_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}${CPACK_ARCHIVE_SUFFIX})
execute_process(
  COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/pack.sh ${CPACK_TEMPORARY_DIRECTORY} ${archive}
  COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
