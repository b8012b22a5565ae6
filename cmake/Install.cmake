# What `cmake --install` puts where: the library, what a program is built with (headers, CMake package,
# pkg-config file) and the command with its manual page and completion, each as a component.

include(CMakePackageConfigHelpers)

set(log4zeb_headers ${CMAKE_INSTALL_INCLUDEDIR}/kivlog4zeb)
set(log4zeb_package ${CMAKE_INSTALL_LIBDIR}/cmake/kivlog4zeb)

install(TARGETS kivlog4zeb EXPORT kivlog4zeb
  RUNTIME COMPONENT library
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(FILES log4zeb.h DESTINATION ${log4zeb_headers} COMPONENT development)
# No class in these headers is one of the shared library's, and none that is installed includes them.
set(log4zeb_internal_headers "/(I18NUtf8|LOGCallScope|LOGComponentStore|LOGDocumentReader|\
LOGReadingPlan|ZEBFmChannel|ZEBIDOM_DocumentData|ZEBSharedLibrary|ZEBThreadInlineGuard|\
ZEBThreadOuterGuard|ZEBThreadPlace|ZEBUtProcess|ZEBUtTerminal|ZEBUtTime)\\.h$")
foreach(folder platform core rendering filters layouts appenders net config)
  install(DIRECTORY ${folder} DESTINATION ${log4zeb_headers} COMPONENT development
    FILES_MATCHING PATTERN "*.h"
    REGEX "${log4zeb_internal_headers}" EXCLUDE
    PATTERN posix EXCLUDE
    PATTERN windows EXCLUDE)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/generated/core/LOG4ZEBVersion.h
  DESTINATION ${log4zeb_headers}/core COMPONENT development)

# Before version 1 another minor version may be incompatible, as the number in the library's name
# says too.
install(EXPORT kivlog4zeb NAMESPACE kivlog4zeb:: FILE kivlog4zebTargets.cmake
  DESTINATION ${log4zeb_package} COMPONENT development)
configure_package_config_file(cmake/kivlog4zebConfig.cmake.in
  ${PROJECT_BINARY_DIR}/generated/kivlog4zebConfig.cmake
  INSTALL_DESTINATION ${log4zeb_package}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/kivlog4zebConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/generated/kivlog4zebConfig.cmake
  ${PROJECT_BINARY_DIR}/generated/kivlog4zebConfigVersion.cmake
  DESTINATION ${log4zeb_package} COMPONENT development)

# The paths in the pkg-config file start from its own place, so that what is installed can be moved.
file(RELATIVE_PATH LOG4ZEB_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" LOG4ZEB_PC_TO_PREFIX "${LOG4ZEB_PC_TO_PREFIX}")
if(BUILD_SHARED_LIBS)
  set(LOG4ZEB_PC_DEFINES "")
  set(LOG4ZEB_PC_LIBS "")
  set(LOG4ZEB_PC_REQUIRES "")
else()
  set(LOG4ZEB_PC_DEFINES " -DLOG4ZEB_STATIC")
  list(TRANSFORM LOG4ZEB_SYSTEM_LIBRARIES PREPEND " -l" OUTPUT_VARIABLE LOG4ZEB_PC_LIBS)
  list(JOIN LOG4ZEB_PC_LIBS "" LOG4ZEB_PC_LIBS)
  string(APPEND LOG4ZEB_PC_LIBS " ${CMAKE_THREAD_LIBS_INIT} -lstdc++ -lm")
  set(LOG4ZEB_PC_REQUIRES "expat >= 2.4")
endif()
configure_file(cmake/kivlog4zeb.pc.in ${PROJECT_BINARY_DIR}/generated/kivlog4zeb.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/kivlog4zeb.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET log4zeb)
  file(RELATIVE_PATH to_library ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(log4zeb PROPERTIES INSTALL_RPATH "$ORIGIN/${to_library}")
  install(TARGETS log4zeb COMPONENT tool)
  if(NOT WIN32)
    configure_file(tools/log4zeb.1.in ${PROJECT_BINARY_DIR}/generated/log4zeb.1 @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/generated/log4zeb.1
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
    install(FILES tools/log4zeb.bash RENAME log4zeb
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
  endif()
endif()
