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
# The Linux platform reads the address book from Evolution Data Server, the
# store of the GNOME mobile stack, when its client library is present; built
# without it, the address book stays restricted.
if(NOT DEFINED TAVRIN_WITH_EDS OR TAVRIN_WITH_EDS)
  pkg_check_modules(EDS QUIET IMPORTED_TARGET libebook-1.2)
endif()
option(TAVRIN_WITH_EDS "Read the Linux address book from Evolution Data Server" ${EDS_FOUND})
if(TAVRIN_WITH_EDS AND NOT EDS_FOUND)
  message(FATAL_ERROR "TAVRIN_WITH_EDS needs libebook-1.2 (Debian: libebook1.2-dev)")
endif()
if(NOT DEFINED TAVRIN_WITH_ECAL OR TAVRIN_WITH_ECAL)
  pkg_check_modules(ECAL QUIET IMPORTED_TARGET libecal-2.0)
endif()
option(TAVRIN_WITH_ECAL "Read the Linux calendars and task lists from Evolution Data Server"
  ${ECAL_FOUND})
if(TAVRIN_WITH_ECAL AND NOT ECAL_FOUND)
  message(FATAL_ERROR "TAVRIN_WITH_ECAL needs libecal-2.0 (Debian: libecal2.0-dev)")
endif()
# What the static library's users link besides, for the optional stores built:
# the CMake package's pkg-config modules, the pkg-config file's flags and the
# development package's dependencies.
set(tavrin_optional_pkg_modules)
set(tavrin_optional_libs)
set(tavrin_optional_dev_packages)
if(TAVRIN_WITH_EDS)
  list(APPEND tavrin_optional_pkg_modules EDS:libebook-1.2)
  list(APPEND tavrin_optional_libs ${EDS_LDFLAGS})
  string(APPEND tavrin_optional_dev_packages ", libebook1.2-dev")
endif()
if(TAVRIN_WITH_ECAL)
  list(APPEND tavrin_optional_pkg_modules ECAL:libecal-2.0)
  list(APPEND tavrin_optional_libs ${ECAL_LDFLAGS})
  string(APPEND tavrin_optional_dev_packages ", libecal2.0-dev")
endif()
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
