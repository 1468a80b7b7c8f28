# Every third-party library the project uses, found once for all targets.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)
find_package(LibLZMA REQUIRED)
pkg_check_modules(LZ4 REQUIRED IMPORTED_TARGET liblz4)
# Whole-buffer raw DEFLATE: about 2.3 times zlib's speed for 8 % fewer bytes.
pkg_check_modules(LIBDEFLATE REQUIRED IMPORTED_TARGET libdeflate)
find_package(CURL REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(nlohmann_json 3.11 REQUIRED)
# libcrypto derives the Linux platform's per-application vendor identifier (HMAC-SHA256).
find_package(OpenSSL REQUIRED)
# What the static library's users link besides, for the optional stores built:
# the CMake package's pkg-config modules, the pkg-config file's flags and the
# development package's dependencies.
set(tavrin_optional_pkg_modules)
set(tavrin_optional_libs)
set(tavrin_optional_dev_packages)
# A Linux store that reads the real data when the pkg-config modules it needs
# (PREFIX:module, each giving the target PkgConfig::PREFIX) are present: the
# option is on by default then, and the store stays restricted without it.
function(tavrin_optional_store option description dev_packages)
  set(found ON)
  if(NOT DEFINED ${option} OR ${option})
    foreach(module IN LISTS ARGN)
      string(REPLACE ":" ";" pair ${module})
      list(GET pair 0 prefix)
      list(GET pair 1 name)
      pkg_check_modules(${prefix} QUIET IMPORTED_TARGET GLOBAL ${name})
      if(NOT ${prefix}_FOUND)
        set(found OFF)
      endif()
      list(APPEND libs ${${prefix}_LDFLAGS})
    endforeach()
  else()
    set(found OFF)
  endif()
  option(${option} "${description}" ${found})
  if(${option} AND NOT found)
    message(FATAL_ERROR "${option} needs ${ARGN} (Debian: ${dev_packages})")
  endif()
  if(${option})
    set(tavrin_optional_pkg_modules ${tavrin_optional_pkg_modules} ${ARGN} PARENT_SCOPE)
    set(tavrin_optional_libs ${tavrin_optional_libs} ${libs} PARENT_SCOPE)
    set(tavrin_optional_dev_packages "${tavrin_optional_dev_packages}, ${dev_packages}" PARENT_SCOPE)
  endif()
endfunction()
# The stores of the GNOME mobile stack: the address book, the calendars and
# the task lists from Evolution Data Server; the photo library from the user's media folders, with exiv2 for image
# metadata and GStreamer's discoverer for video headers; the carrier from
# ModemManager; the location services from GeoClue over D-Bus (GIO).
tavrin_optional_store(TAVRIN_WITH_EDS "Read the Linux address book from Evolution Data Server"
  "libebook1.2-dev" EDS:libebook-1.2)
tavrin_optional_store(TAVRIN_WITH_ECAL
  "Read the Linux calendars and task lists from Evolution Data Server"
  "libecal2.0-dev" ECAL:libecal-2.0)
tavrin_optional_store(TAVRIN_WITH_MEDIA "Read the Linux photo library from the XDG media folders"
  "libexiv2-dev, libgstreamer-plugins-base1.0-dev" EXIV2:exiv2 GSTPBUTILS:gstreamer-pbutils-1.0)
tavrin_optional_store(TAVRIN_WITH_MODEMMANAGER "Read the Linux carrier from ModemManager"
  "libmm-glib-dev" MMGLIB:mm-glib)
tavrin_optional_store(TAVRIN_WITH_GEOCLUE "Read the Linux location services from GeoClue"
  "libglib2.0-dev" GIO:gio-2.0)
# The cameras are the V4L2 capture devices, asked through the kernel's
# interface; built without its header, the machine has no camera.
include(CheckIncludeFileCXX)
if(NOT DEFINED TAVRIN_WITH_V4L2 OR TAVRIN_WITH_V4L2)
  check_include_file_cxx(linux/videodev2.h tavrin_v4l2_found)
endif()
option(TAVRIN_WITH_V4L2 "Describe the Linux machine's V4L2 cameras" ${tavrin_v4l2_found})
list(REMOVE_DUPLICATES tavrin_optional_libs)
list(JOIN tavrin_optional_pkg_modules " " tavrin_optional_pkg_modules)
list(JOIN tavrin_optional_libs " " tavrin_optional_libs)

if(TAVRIN_BUILD_TOOLS OR TAVRIN_BUILD_TESTS OR TAVRIN_BUILD_BENCH OR TAVRIN_BUILD_FUZZ)
  find_package(SQLite3 REQUIRED)
  # The sandbox parses uploaded datasets, up to hundreds of megabytes, with it.
  find_package(simdjson REQUIRED)
  find_package(CLI11 CONFIG REQUIRED)
  find_path(HTTPLIB_INCLUDE_DIR httplib.h REQUIRED)
  # Debian builds cpp-httplib as a library; pkg-config gives it with its TLS support switched on.
  pkg_check_modules(CPPHTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
endif()
if(TAVRIN_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
if(TAVRIN_BUILD_BENCH)
  find_package(benchmark REQUIRED)
  find_package(RapidJSON REQUIRED)
endif()
