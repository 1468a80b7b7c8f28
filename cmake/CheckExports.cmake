# Checks that a shared tavrinsdk exports the public interface and nothing else.
#
#   cmake -DLIBRARY=libtavrinsdk.so.1 -DHEADERS=include [-DSONAME=libtavrinsdk.so.1] \
#         -P CheckExports.cmake
#
# The public interface is what include/tavrin marks TAVRIN_EXPORT: the classes
# (their members, run-time type information and virtual tables) and the
# functions and variables, C++ and C. Every dynamic symbol the library defines must belong
# to one of them, and each of them must be exported. With SONAME, the library's
# SONAME must be that name. Fails with the list of offending symbols.
cmake_minimum_required(VERSION 3.25)

foreach(required LIBRARY HEADERS)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "CheckExports: -D${required}=... is required")
  endif()
endforeach()
find_program(NM NAMES nm REQUIRED)
find_program(READELF NAMES readelf REQUIRED)

# The names the headers export.
set(declared)
file(GLOB_RECURSE headers ${HEADERS}/*.hpp ${HEADERS}/*.h)
foreach(header IN LISTS headers)
  file(READ "${header}" text)
  string(REGEX REPLACE "//[^\n]*" "" text "${text}")
  string(REGEX REPLACE "\n[ ]*#[^\n]*" "\n" text "${text}")
  string(REPLACE "\n" " " text "${text}")
  string(REGEX MATCHALL "(class|struct) +TAVRIN_EXPORT +[A-Za-z_][A-Za-z0-9_]*" classes "${text}")
  foreach(class IN LISTS classes)
    string(REGEX REPLACE ".* " "" name "${class}")
    list(APPEND declared "${name}")
  endforeach()
  string(REGEX REPLACE "(class|struct) +TAVRIN_EXPORT" "" text "${text}")
  # A function's name is the last word before its parameter list; a variable's
  # is the last word of its declaration.
  string(REGEX MATCHALL "TAVRIN_EXPORT [^;{}()]*" declarations "${text}")
  foreach(declaration IN LISTS declarations)
    string(REGEX REPLACE "\\[[^]]*\\]" "" declaration "${declaration}")
    string(REGEX MATCH "[A-Za-z_][A-Za-z0-9_]* *$" name "${declaration}")
    string(STRIP "${name}" name)
    list(APPEND declared "${name}")
  endforeach()
endforeach()
list(REMOVE_DUPLICATES declared)
if(NOT declared)
  message(FATAL_ERROR "CheckExports: no TAVRIN_EXPORT declarations under ${HEADERS}")
endif()

execute_process(COMMAND ${NM} -D --defined-only --demangle "${LIBRARY}"
  OUTPUT_VARIABLE listing RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "CheckExports: nm failed on ${LIBRARY}: ${errors}")
endif()
string(REPLACE ";" "\\;" listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")

set(unexpected)
set(devkit)
set(seen)
set(count 0)
foreach(line IN LISTS lines)
  # "ADDRESS TYPE NAME"; the name may contain blanks.
  if(NOT line MATCHES "^[0-9a-fA-F]+ [A-Za-z] (.+)$")
    continue()
  endif()
  set(symbol "${CMAKE_MATCH_1}")
  math(EXPR count "${count} + 1")
  string(REGEX REPLACE "^(typeinfo name for |typeinfo for |vtable for |non-virtual thunk to )" ""
    entity "${symbol}")
  if(entity MATCHES "^tavrin::(platform::)?([A-Za-z_][A-Za-z0-9_]*)")
    set(name "${CMAKE_MATCH_2}")
  elseif(entity MATCHES "^[A-Za-z_][A-Za-z0-9_]*$")
    set(name "${entity}")  # a C symbol
  else()
    set(name "")
  endif()
  # The devkit (generator, sandbox) is linked by the tool, never by the library.
  if(entity MATCHES "^tavrin::tool::|Sandbox|ProfileGenerator|DeviceProfileWriter|DatasetValidator")
    list(APPEND devkit "${symbol}")
  endif()
  if(name AND name IN_LIST declared)
    list(APPEND seen "${name}")
  else()
    list(APPEND unexpected "${symbol}")
  endif()
endforeach()

set(missing ${declared})
if(seen)
  list(REMOVE_ITEM missing ${seen})
endif()

set(problems "")
if(devkit)
  list(JOIN devkit "\n  " text)
  string(APPEND problems "generator or sandbox symbols:\n  ${text}\n")
endif()
if(unexpected)
  list(JOIN unexpected "\n  " text)
  string(APPEND problems "exported but not public:\n  ${text}\n")
endif()
if(missing)
  list(JOIN missing "\n  " text)
  string(APPEND problems "public but not exported:\n  ${text}\n")
endif()

if(DEFINED SONAME)
  execute_process(COMMAND ${READELF} -d "${LIBRARY}" OUTPUT_VARIABLE dynamic RESULT_VARIABLE status)
  if(NOT dynamic MATCHES "\\(SONAME\\)[^\n]*\\[([^]\n]*)\\]")
    string(APPEND problems "no SONAME\n")
  elseif(NOT CMAKE_MATCH_1 STREQUAL SONAME)
    string(APPEND problems "SONAME is ${CMAKE_MATCH_1}, expected ${SONAME}\n")
  endif()
endif()

if(problems)
  message(FATAL_ERROR "CheckExports: ${LIBRARY}\n${problems}")
endif()
list(LENGTH declared names)
message(STATUS "${LIBRARY}: ${count} exported symbols, all of the ${names} public names")
