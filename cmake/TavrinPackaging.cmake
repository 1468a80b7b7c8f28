# The Debian packages of `make package` (cpack -G DEB in the build directory):
#   tavrinsdk      the shared library, nothing else
#   tavrinsdk-dev  headers, static library, CMake package, pkg-config file
#   tavrin-tools   the tavrin tool (collect, dataset, sandbox, inspect, profile)
# Runtime dependencies are read from the binaries by dpkg-shlibdeps (dpkg-dev).
set(TAVRIN_PACKAGE_MAINTAINER "tavrinsdk maintainers <tavrinsdk@localhost>" CACHE STRING
  "The Maintainer field of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavrinsdk)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${TAVRIN_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TAVRIN_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A shlibs file (and the ldconfig trigger) for the library: programs built
# against 1.x.y need at least 1.x.y.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME tavrinsdk)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# What the Linux stores read at run time besides the libraries they link:
# GStreamer's demuxers for the headers of videos, and the provider database
# for the country of a carrier.
set(tavrin_runtime_recommends)
if(TAVRIN_WITH_MEDIA)
  list(APPEND tavrin_runtime_recommends gstreamer1.0-plugins-base gstreamer1.0-plugins-good)
endif()
if(TAVRIN_WITH_MODEMMANAGER)
  list(APPEND tavrin_runtime_recommends mobile-broadband-provider-info)
endif()
list(JOIN tavrin_runtime_recommends ", " CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME tavrinsdk-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tavrin-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
# The static library, its CMake package and the pkg-config file's
# Requires.private name these libraries' development files.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "zlib1g-dev, libdeflate-dev, liblzma-dev, liblz4-dev, libcurl4-openssl-dev | libcurl-dev, libicu-dev, libssl-dev${tavrin_optional_dev_packages}")

include(CPack)
cpack_add_component(runtime
  DISPLAY_NAME "tavrinsdk"
  DESCRIPTION "the shape of a device's data, for a scoring service
The shared library libtavrinsdk.so.${PROJECT_VERSION_MAJOR}, which collects the shape of
what a device holds and sends it to a scoring service.")
cpack_add_component(dev
  DISPLAY_NAME "tavrinsdk development files"
  DESCRIPTION "development files of tavrinsdk
The public C++17 headers, the static library, the CMake package
(find_package(tavrinsdk CONFIG)) and the pkg-config file (tavrinsdk.pc)."
  DEPENDS runtime)
cpack_add_component(tools
  DISPLAY_NAME "tavrin tools"
  DESCRIPTION "command-line tool and sandbox for tavrinsdk
The tavrin tool: collect a record, print a dataset, generate device profiles,
run the sandbox scoring service and inspect what it received. It carries its
own copy of the library, so it needs no other package of tavrinsdk.")
