# What an installation holds, relative to the prefix, in three components:
#   plugin   what a card needs: the plug-in, the headers of the platform that loads it, the manual
#   gponval  the command with its platform, the model and the examples
#   python   the Python package, see python/CMakeLists.txt; it uses the other two
# The command finds the rest from its own folder, so an installation may be moved as a whole.

include(GNUInstallDirs)
set(plugin_dir ${CMAKE_INSTALL_LIBDIR}/tarnd)
set(data_dir ${CMAKE_INSTALL_DATADIR}/tarnd)

install(TARGETS gpon_valid LIBRARY DESTINATION ${plugin_dir} COMPONENT plugin)
install(DIRECTORY platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarnd COMPONENT plugin
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT plugin
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN man EXCLUDE)

if(NOT CONFD_DIR)
  file(RELATIVE_PATH plugin_dir_from_command
       ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/tarnd)
  set_target_properties(gponval PROPERTIES INSTALL_RPATH "$ORIGIN/${plugin_dir_from_command}")
  install(TARGETS gponval RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT gponval)
  install(TARGETS tarnd_standalone LIBRARY DESTINATION ${plugin_dir} COMPONENT gponval)
  install(DIRECTORY model/ DESTINATION ${data_dir}/model COMPONENT gponval
          FILES_MATCHING PATTERN "*.yang" PATTERN "known-numbers.txt" PATTERN header EXCLUDE)
  install(DIRECTORY examples DESTINATION ${data_dir} COMPONENT gponval)
  install(FILES docs/man/gponval.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT gponval)
  install(FILES tools/gponval/gponval-serve@.service DESTINATION lib/systemd/system
          COMPONENT gponval)
  install(FILES tools/gponval/completion.bash
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME gponval
          COMPONENT gponval)
  install(FILES tools/gponval/completion.zsh
          DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions RENAME _gponval
          COMPONENT gponval)
  install(FILES tools/gponval/completion.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d RENAME gponval.fish
          COMPONENT gponval)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/packages.cmake)
