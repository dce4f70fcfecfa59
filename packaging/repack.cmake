# CPack calls this script with the packages that it has built.
foreach(package ${CPACK_PACKAGE_FILES})
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/repack ${package} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
