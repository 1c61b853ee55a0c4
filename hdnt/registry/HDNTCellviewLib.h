#pragma once

#include "hdnt/platform/Export.h"
#include "hdnt/platform/HCTMutex.h"
#include "hdnt/platform/NameIndex.h"

#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The registry of cellview types: every primitive that the design tool knows has a fixed number and an upper-case
/// name. The table is compiled in (data/cellviews.csv, or the file given when the library was built);
/// hdnt::registerCells and the tables of HDNT_CELLVIEWS add to it until it is first asked for, and then it never
/// changes. Values carry no meaning beyond identity.
///
/// Built on the first getGlobal(), from any thread; all queries may run in any number of threads.
class HDNT_API HDNTCellviewLib {
public:
    enum Type : int {
        UNKNOWN = 4000, ///< no registered primitive
    };

    /// Never null; lives as long as the process. Throws HEXDataException, as often as it is called, when a table of the
    /// environment variable HDNT_CELLVIEWS is refused (hdnt::registerCells says which are).
    static const HDNTCellviewLib* getGlobal();
    /// Fills s_typeToName. Called by getGlobal().
    static void initializeValues();

    /// "UNKNOWN" for 4000. For an unused value: a message on standard output, which is left in a failed state, and
    /// HEXInternalException.
    const std::string& getName(Type type) const;
    /// By exact name; UNKNOWN for a name that is not registered, "UNKNOWN" included.
    Type getType(const std::string& name) const;
    std::unordered_map<Type, std::string> getTypeToNameMap() const;
    /// All registered values, ascending; UNKNOWN is the last.
    const std::vector<Type>& allTesselEnums() const { return allTesselEnums_; }

    /// Names by value, null for unused values. Null throughout before initializeValues().
    static const char* s_typeToName[4001];
    static bool initializedValue;
    /// Greatest registered value below 4000; set when the registry is built.
    static int MAX;
    static HCTMutex m_initializeValuesMutex;

private:
    HDNT_LOCAL HDNTCellviewLib();

    std::string_view nameAt(size_t i) const { return s_typeToName[allTesselEnums_[i]]; }
    HDNT_LOCAL const std::vector<std::string>& names() const;

    std::vector<Type> allTesselEnums_;
    hdnt::platform::NameIndex byName_; ///< positions in allTesselEnums_
    mutable std::once_flag namesMade_;
    mutable std::vector<std::string> names_; ///< in the order of allTesselEnums_
};

/// Writes the name; for an unused value nothing, and the stream turns bad.
HDNT_API std::ostream& operator<<(std::ostream& out, HDNTCellviewLib::Type type);
