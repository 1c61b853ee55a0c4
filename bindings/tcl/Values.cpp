#include "bindings/tcl/Values.h"

#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"

namespace hdnt::tcl {

Tcl_Obj* valueOf(const HDNTValue& value) { return toTcl(value.getPlainValue()); }

Value valueFor(HATAttrTypes::AttrType type, Tcl_Obj* word) {
    switch (type) {
    case HATAttrTypes::TypeBool: return boolOf(word);
    case HATAttrTypes::TypeInt: return intOf(word);
    case HATAttrTypes::TypeDouble: return doubleOf(word);
    default: return textOf(word);
    }
}

std::optional<Value> valueFor(const HDNTProperty* property, Tcl_Obj* word) try {
    return valueFor(property ? property->getType() : HATAttrTypes::TypeString, word);
} catch (const Refused&) {
    return std::nullopt;
}

// Of a function that is not declared, the word says the type itself.
static Value guess(Tcl_Obj* word) {
    for (const HATAttrTypes::AttrType type : {HATAttrTypes::TypeInt, HATAttrTypes::TypeDouble}) try {
            return valueFor(type, word);
        } catch (const Refused&) {
            continue;
        }
    return textOf(word);
}

TclFunctions::~TclFunctions() {
    if (ended_) Tcl_DiscardInterpState(ended_->state);
}

void TclFunctions::add(Tcl_Obj* dict) {
    const std::vector<Tcl_Obj*> words = wordsOf(interp_, dict);
    if (words.size() % 2 != 0)
        throw Refused({"HDNT", "VALUE"}, "functions: a name and a command prefix each are wanted");
    for (size_t i = 0; i < words.size(); i += 2) {
        Tcl_Obj* const prefix = words[i + 1];
        prefixes_.emplace_back(prefix);
        table_.add(textOf(words[i]),
                   [this, prefix](const HDNTFunctionCall& made, const std::vector<const HDNTValue*>& values) {
                       return call(made, prefix, values);
                   });
    }
}

std::unique_ptr<HDNTValue> TclFunctions::call(const HDNTFunctionCall& call, Tcl_Obj* prefix,
                                              const std::vector<const HDNTValue*>& values) {
    std::vector<Obj> words;
    words.reserve(values.size());
    for (const HDNTValue* value : values) words.emplace_back(valueOf(*value));
    const HDNTFunctionDecl* const declared = call.getDecl();
    const bool isStatement = call.isStatement();
    const HATAttrTypes::AttrType type = declared ? declared->getType() : HATAttrTypes::TypeString;
    try {
        const int code = callBack(interp_, prefix, words);
        if (code != TCL_OK && code != TCL_RETURN)
            throw Refused({"HDNT", "CALLBACK"}, "a function of a mapping ended with code " + std::to_string(code));
        const Obj result(Tcl_GetObjResult(interp_));
        if (isStatement) return nullptr;
        return HDNTValue::makeConstant(declared ? valueFor(type, result.get()) : guess(result.get()));
    } catch (const CallbackEnded& ended) {
        if (ended_) Tcl_DiscardInterpState(ended.state);
        else ended_ = ended;
    } catch (...) {
        const int status = setTclError(interp_);
        if (!ended_) ended_ = CallbackEnded{Tcl_SaveInterpState(interp_, status), status};
    }
    throw std::runtime_error("a function raised an error");
}

} // namespace hdnt::tcl
