# hdnt_flags: warnings and sanitizers, the same for library, tools and tests.
add_library(hdnt_flags INTERFACE)
target_compile_options(hdnt_flags INTERFACE -Wall -Wextra -Wpedantic)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 sees overlaps in the standard library's own string concatenation (GCC bug 105651).
  target_compile_options(hdnt_flags INTERFACE -Wno-restrict)
endif()
if(HDNT_WERROR)
  target_compile_options(hdnt_flags INTERFACE -Werror)
endif()
if(HDNT_SANITIZE)
  add_compile_options(-fsanitize=${HDNT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${HDNT_SANITIZE})
  add_compile_definitions(HDNT_SANITIZED)
  # An interpreter that loads a package needs the sanitizer before it, as a library; clang puts it into programs unless it
  # is told to have it as a library everywhere.
  string(REGEX MATCH "[at]" letter "${HDNT_SANITIZE}")
  set(name lib${letter}san.so)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(name libclang_rt.${letter}san-${CMAKE_SYSTEM_PROCESSOR}.so)
  endif()
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE HDNT_SANITIZER
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT HDNT_FUZZ)
    get_filename_component(folder "${HDNT_SANITIZER}" DIRECTORY)
    add_link_options(-shared-libasan -Wl,-rpath,${folder})
  endif()
endif()
