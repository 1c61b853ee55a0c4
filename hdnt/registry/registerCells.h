#pragma once

#include "hdnt/platform/Export.h"

#include <string>

namespace hdnt {

/// Adds the cells of a table to those that are compiled in, for the process and for good. The table is a file of the
/// form of data/cellviews.csv: 'value,NAME' a line, values 0 to 3999, names of 4 to 35 upper-case letters, digits and
/// underscores. A row that is known already, as '4000,UNKNOWN' is, changes nothing.
///
/// All of the table is added or nothing: HEXDataException says file, line and reason when it cannot be read, when a
/// line has another form, and when a name has another value already or a value another name. It is also thrown when it
/// is too late: HDNTCellviewLib::getGlobal() was called before, which the first block of a process does.
///
/// The environment variable HDNT_CELLVIEWS names tables, separated by colons, that HDNTCellviewLib::getGlobal() adds in
/// the same way when it is first called. From any thread.
HDNT_API void registerCells(const std::string& path);

} // namespace hdnt
