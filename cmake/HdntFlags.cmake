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
endif()
