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

# HDNT_SANITIZER: the sanitizer as a library. An interpreter that loads a package needs it before that; clang has it inside
# of programs unless it is told to have it as a library everywhere.
function(hdnt_find_sanitizer)
  string(REGEX MATCH "[at]" letter "${HDNT_SANITIZE}") # of address or thread
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(name libclang_rt.${letter}san-${CMAKE_SYSTEM_PROCESSOR}.so)
  else()
    set(name lib${letter}san.so)
  endif()
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE found
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(HDNT_SANITIZER "${found}" PARENT_SCOPE)
endfunction()
if(HDNT_SANITIZE)
  add_compile_options(-fsanitize=${HDNT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${HDNT_SANITIZE})
  add_compile_definitions(HDNT_SANITIZED)
  hdnt_find_sanitizer()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT HDNT_FUZZ)
    get_filename_component(HDNT_SANITIZER_DIR "${HDNT_SANITIZER}" DIRECTORY)
    add_link_options(-shared-libasan -Wl,-rpath,${HDNT_SANITIZER_DIR})
  endif()
endif()
