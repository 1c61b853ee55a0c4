# cmake -DINPUT=table.csv -DOUTPUT=table.cpp -P CellviewTable.cmake
#
# Makes the compiled-in cellview table of a file with 'value,name' a line: values 0 to 3999 and 4000 for UNKNOWN, names
# of 4 to 35 upper-case letters, digits and underscores, each value and each name once. Refuses anything else and says
# which line.
file(STRINGS "${INPUT}" lines)
set(rows "")
set(number 0)
set(unknown FALSE)
foreach(line IN LISTS lines)
  math(EXPR number "${number} + 1")
  if(NOT line MATCHES "^(0|[1-9][0-9]?[0-9]?[0-9]?),([A-Z0-9_]+)$")
    message(FATAL_ERROR "${INPUT}:${number}: expected 'value,NAME', found '${line}'")
  endif()
  set(value ${CMAKE_MATCH_1})
  set(name ${CMAKE_MATCH_2})
  string(LENGTH "${name}" length)
  if(length LESS 4 OR length GREATER 35)
    message(FATAL_ERROR "${INPUT}:${number}: name '${name}' has not 4 to 35 characters")
  endif()
  if(value EQUAL 4000 AND name STREQUAL "UNKNOWN")
    set(unknown TRUE)
  elseif(value GREATER 3999 OR name STREQUAL "UNKNOWN")
    message(FATAL_ERROR "${INPUT}:${number}: value ${value} is not within 0 and 3999 (4000 is UNKNOWN)")
  endif()
  if(DEFINED value_${value})
    message(FATAL_ERROR "${INPUT}:${number}: value ${value} is also in line ${value_${value}}")
  endif()
  if(DEFINED name_${name})
    message(FATAL_ERROR "${INPUT}:${number}: name ${name} is also in line ${name_${name}}")
  endif()
  set(value_${value} ${number})
  set(name_${name} ${number})
  string(APPEND rows "    {${value}, \"${name}\"},\n")
endforeach()
if(NOT unknown)
  message(FATAL_ERROR "${INPUT}:${number}: the line '4000,UNKNOWN' is missing")
endif()
file(WRITE "${OUTPUT}" "// Made from the cellview table by the build.
#include \"hdnt/registry/CellviewTable.internal.h\"

namespace hdnt::registry {

const CellviewEntry cellviewTable[] = {
${rows}    {-1, nullptr},
};

} // namespace hdnt::registry
")
