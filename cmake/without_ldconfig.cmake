# Run by CPack over the packages it made. It lets each package with a library near lib/ call ldconfig
# when installed and removed. These libraries are never searched for by the linker, and a package with
# a script for its removal still stands in dpkg's lists afterwards.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(content ${package}.content)
  execute_process(COMMAND dpkg-deb -R ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${content}/DEBIAN/postinst ${content}/DEBIAN/postrm)
  execute_process(COMMAND dpkg-deb --root-owner-group -b ${content} ${package}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${content})
endforeach()
