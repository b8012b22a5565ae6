# The Debian packages that `cpack` makes: the library under a name that says which programs it suits,
# what these are built with, and the command. To be configured with the prefix /usr, as the preset
# `package` does.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT "LOG4ZEB developers <root@localhost>" CACHE STRING
  "The maintainer that packages name")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development)
if(TARGET log4zeb)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)

get_target_property(soversion kivlog4zeb SOVERSION)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libkivlog4zeb${soversion})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "This is the library that programs load.")

set(exact_library "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkivlog4zeb-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${exact_library}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "This is what programs are built with: headers, CMake package and pkg-config file.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME log4zeb)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${exact_library}")
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "This is the command that logs from scripts, receives datagrams and makes HTML pages.")

include(CPack)
