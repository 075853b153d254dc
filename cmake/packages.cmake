# The Debian packages: cpack in the build folder makes libgpon-valid, gponval and python3-gponval of the
# components of the installation. The address ends in .invalid, since nobody reads mail for it yet.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT "The gpon-valid developers <gpon-valid@tarnd.invalid>")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_documents.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/without_ldconfig.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL plugin)
if(NOT CONFD_DIR)
  list(APPEND CPACK_COMPONENTS_ALL gponval)
endif()
if(TARGET gponval_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_COMPONENT_GPONVAL_DEPENDS plugin)
set(CPACK_COMPONENT_PYTHON_DEPENDS gponval)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What a package needs is read from its binaries; of each other they need the same version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(zlog_origin "
The trace is written with zlog, which Debian carries from release 13 on. On
Debian 12 the package libzlog1 of release 13 is installed as it is.")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME libgpon-valid)
set(CPACK_DEBIAN_PLUGIN_DESCRIPTION
"configuration validation plug-in of the tarnd line-card daemon
Accepts, rejects or questions each configuration commit of a GPON or XGS-PON
line card. With the headers of the platform that the daemon offers the plug-in,
and the manual.
${zlog_origin}")

set(CPACK_DEBIAN_GPONVAL_PACKAGE_NAME gponval)
# The modules of NETCONF that gponval serve hands out.
set(CPACK_DEBIAN_GPONVAL_PACKAGE_DEPENDS libyuma-base)
set(CPACK_DEBIAN_GPONVAL_DESCRIPTION
"commits line-card configuration changes away from the card
Commits a change of the configuration of a GPON or XGS-PON line card through
the validation plug-in of the tarnd daemon, on a workstation, and prints the
verdict. Brings the data model and examples.
${zlog_origin}")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-gponval)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
if(TARGET gponval_python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS ${PYTHON_NEEDED})
  # The platform's library is in the package gponval.
  get_target_property(platform_folder tarnd_standalone BINARY_DIR)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${platform_folder})
endif()
# What gponval-fleet can do without.
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS 
  "python3-jinja2, python3-matplotlib, python3-rich, python3-yaml")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-distributed)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/python/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"verdicts on line-card configuration changes in Python
Has the configuration of a GPON or XGS-PON line card in a Python process and
validates changes with the plug-in of the tarnd daemon; also reports what the
PON links carry. The command gponval-fleet audits many configurations at once.
${zlog_origin}")

include(CPack)
