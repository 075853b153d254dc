# Run by CPack before it makes the packages: what Debian wants in each besides what is installed, a
# changelog and a copyright file, and manual pages compressed.
set(top ${CMAKE_CURRENT_LIST_DIR}/..)
set(staged ${CPACK_TEMPORARY_DIRECTORY})

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(documents ${staged}/${component}/usr/share/doc/${package})
  file(MAKE_DIRECTORY ${documents})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright COPYONLY)
  execute_process(
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/debian_changelog
      ${top}/CHANGELOG.md ${package} ${CPACK_PACKAGE_CONTACT}
    OUTPUT_FILE ${documents}/changelog COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB compressed ${documents}/changelog ${staged}/${component}/usr/share/man/man*/*.[1-9])
  execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
