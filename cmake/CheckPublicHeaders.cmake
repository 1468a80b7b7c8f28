# Checks that the public headers include only each other and the standard
# library, so a host needs no header of the libraries tavrinsdk uses (curl,
# ICU, zlib, ...), which a compile on a machine that has them cannot show.
#
#   cmake -DHEADERS=include -P CheckPublicHeaders.cmake
cmake_minimum_required(VERSION 3.25)

get_filename_component(HEADERS "${HEADERS}" ABSOLUTE)
file(GLOB_RECURSE headers RELATIVE "${HEADERS}" "${HEADERS}/*.hpp" "${HEADERS}/*.h")
set(problems "")
foreach(header IN LISTS headers)
  file(STRINGS "${HEADERS}/${header}" includes REGEX "^[ ]*#[ ]*include")
  foreach(line IN LISTS includes)
    # <tavrin/...> or a standard header: one lower-case word, no extension;
    # in the C header, the C standard headers it needs.
    if(header MATCHES "\\.h$" AND line MATCHES "^[ ]*#[ ]*include[ ]*<(stddef|stdint)\\.h>")
      continue()
    endif()
    if(line MATCHES "^[ ]*#[ ]*include[ ]*<(tavrin/[A-Za-z0-9_/]+\\.hpp|[a-z_0-9]+)>")
      if(CMAKE_MATCH_1 MATCHES "^tavrin/" AND NOT EXISTS "${HEADERS}/${CMAKE_MATCH_1}")
        string(APPEND problems "  ${header}: ${line} (no such public header)\n")
      endif()
    else()
      string(APPEND problems "  ${header}: ${line}\n")
    endif()
  endforeach()
endforeach()
if(problems)
  message(FATAL_ERROR "Public headers include what a host may not have:\n${problems}")
endif()
list(LENGTH headers count)
message(STATUS "${count} public headers include only <tavrin/...> and the standard library")
