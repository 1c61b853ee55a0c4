#pragma once

#include "bindings/tcl/Convert.h"
#include "hdnt/model/Value.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTValue.h"

#include <memory>
#include <optional>
#include <utility>

class HDNTProperty;

namespace hdnt::tcl {

/// A script's word as a value of a type. Throws Refused for a word that is none.
Value valueFor(HATAttrTypes::AttrType type, Tcl_Obj* word);
/// The same for a property, or for none; nothing for a word that is none.
std::optional<Value> valueFor(const HDNTProperty* property, Tcl_Obj* word);
/// The value of a constant.
Tcl_Obj* valueOf(const HDNTValue& value);

/// A dict of command prefixes as functions of mappings, for the life of the object.
class TclFunctions {
public:
    explicit TclFunctions(Tcl_Interp* interp) : interp_(interp) {}
    ~TclFunctions();
    TclFunctions(const TclFunctions&) = delete;

    /// Throws ResultIsSet for what is no dict.
    void add(Tcl_Obj* dict);

    /// Runs something that may call the functions, in a section; what a prefix ended with comes out as it was.
    template <typename Work>
    void run(const std::string& of, LoadSection::Kind kind, Work&& work) {
        scripts::withFunctions(scriptLock(), kind, table_, of, work, [&] {
            if (ended_) throw *std::exchange(ended_, std::nullopt);
        });
    }

private:
    std::unique_ptr<HDNTValue> call(const HDNTFunctionCall& call, Tcl_Obj* prefix,
                                    const std::vector<const HDNTValue*>& values);

    Tcl_Interp* interp_;
    HDNTFunctionTable table_;
    std::vector<Obj> prefixes_;
    std::optional<CallbackEnded> ended_; ///< the first error
};

} // namespace hdnt::tcl
