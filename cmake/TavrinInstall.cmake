# What `cmake --install` puts where, the CMake package and pkg-config file a
# host finds the library with, and the Debian packages `make package` builds.
#
# Three install components: `runtime` (the shared library alone), `dev` (the
# public headers, the static library, the shared library's link-time name, the
# CMake package and the pkg-config file) and `tools` (the tavrin tool). Nothing
# from src/ is installed.
include(CMakePackageConfigHelpers)

set(tavrin_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tavrinsdk)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tavrin
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT dev
  FILES_MATCHING PATTERN "*.hpp" PATTERN "*.h")

if(TARGET tavrinsdk)
  install(TARGETS tavrinsdk EXPORT tavrinsdk-shared-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
  install(EXPORT tavrinsdk-shared-targets NAMESPACE tavrin::
    DESTINATION ${tavrin_cmake_dir} COMPONENT dev)
endif()
if(TARGET tavrinsdk_static)
  install(TARGETS tavrinsdk_static EXPORT tavrinsdk-static-targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(EXPORT tavrinsdk-static-targets NAMESPACE tavrin::
    DESTINATION ${tavrin_cmake_dir} COMPONENT dev)
  # A stripping install (cmake --install --strip, the Debian packages) strips
  # the executables and the shared library; the archive keeps its symbols and
  # loses its debugging information.
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:tavrinsdk_static>\"
        COMMAND_ERROR_IS_FATAL ANY)
    endif()"
    COMPONENT dev)
endif()
if(TARGET tavrin)
  install(TARGETS tavrin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tavrinsdk-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tavrinsdk-config.cmake
  INSTALL_DESTINATION ${tavrin_cmake_dir}
  NO_SET_AND_CHECK_MACRO)
# A host written against 1.x builds with any later 1.x.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tavrinsdk-config-version.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/tavrinsdk-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/tavrinsdk-config-version.cmake
  DESTINATION ${tavrin_cmake_dir}
  COMPONENT dev)

# The pkg-config file. The libraries the static library needs are in its
# Libs.private rather than Requires.private: pkg-config adds the Cflags of a
# required package even to a shared build, and the public headers need none.
#
# The file names the prefix the files end up under, which is known
# only when they are installed: `cmake --install --prefix DIR` or /usr inside a
# Debian package. So the file is configured twice: now with everything but the
# prefix (which configures to its own placeholder), and at install time.
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(directory "${CMAKE_INSTALL_${kind}}")
  else()
    set(directory "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
  string(TOLOWER "tavrin_pc_${kind}" variable)
  set(${variable} "${directory}")
endforeach()
set(tavrin_pc_prefix "@tavrin_pc_prefix@")
set(tavrin_pc_template ${CMAKE_CURRENT_BINARY_DIR}/tavrinsdk.pc.in)
set(tavrin_pc_file ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/tavrinsdk.pc)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tavrinsdk.pc.in ${tavrin_pc_template} @ONLY)
install(CODE "
  set(tavrin_pc_prefix \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${tavrin_pc_template}\" \"${tavrin_pc_file}\" @ONLY)"
  COMPONENT dev)
install(FILES ${tavrin_pc_file}
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT dev)

include(TavrinPackaging)
