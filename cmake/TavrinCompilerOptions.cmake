# Warnings and sanitizers shared by every target of the project.
add_library(tavrin_compiler_options INTERFACE)
target_compile_options(tavrin_compiler_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wimplicit-fallthrough)
if(TAVRIN_WERROR)
  target_compile_options(tavrin_compiler_options INTERFACE -Werror)
endif()

if(TAVRIN_SANITIZE)
  set(tavrin_sanitize_flags -fsanitize=${TAVRIN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_compile_options(${tavrin_sanitize_flags})
  add_link_options(${tavrin_sanitize_flags})
endif()

# Line coverage of everything built, for `make coverage` (GCC's gcov format).
if(TAVRIN_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# Coverage feedback for libFuzzer in every object the fuzz targets link.
if(TAVRIN_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
