#pragma once

#include "bindings/shared/Fields.h"
#include "bindings/tcl/Handle.h"
#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/model/Value.h"

#include <concepts>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::tcl {

/// Holds a reference to a Tcl value.
class Obj {
public:
    explicit Obj(Tcl_Obj* object) : object_(object) { Tcl_IncrRefCount(object_); }
    Obj(const Obj& other) : Obj(other.object_) {}
    Obj(Obj&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Obj& operator=(Obj other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Obj() {
        if (object_) Tcl_DecrRefCount(object_);
    }
    Tcl_Obj* get() const { return object_; }
    /// Gives the value away: without a reference when nobody else has one.
    Tcl_Obj* giveAway() {
        Tcl_Obj* const object = std::exchange(object_, nullptr);
        --object->refCount;
        return object;
    }

private:
    Tcl_Obj* object_;
};

// Values as Tcl's own, without a reference. Null and nullptr are the empty text. Texts may hold any bytes: those that
// are no UTF-8 come as the characters DC80 to DCFF, and go back as what they were.

Tcl_Obj* toTcl(std::string_view text);
inline Tcl_Obj* toTcl(const std::string& text) { return toTcl(std::string_view(text)); }
inline Tcl_Obj* toTcl(const char* text) { return text ? toTcl(std::string_view(text)) : Tcl_NewObj(); }
inline Tcl_Obj* toTcl(std::nullptr_t) { return Tcl_NewObj(); }
inline Tcl_Obj* toTcl(bool value) { return Tcl_NewIntObj(value ? 1 : 0); }
inline Tcl_Obj* toTcl(double value) { return Tcl_NewDoubleObj(value); }
inline Tcl_Obj* toTcl(Tcl_Obj* value) { return value; }
inline Tcl_Obj* toTcl(Obj&& value) { return value.giveAway(); }
Tcl_Obj* toTcl(const Obj& value) = delete; // may go before its use
/// The name of a file, as the system has it.
struct File {
    std::string_view name;
};
Tcl_Obj* toTcl(File file);
Tcl_Obj* toTcl(const yyltype& location);
Tcl_Obj* toTcl(const Place& at);
Tcl_Obj* toTcl(const Diagnostic& diagnostic);
template <std::integral Number>
requires(!std::same_as<Number, bool>) Tcl_Obj* toTcl(Number value) {
    return Tcl_NewWideIntObj(static_cast<Tcl_WideInt>(value));
}
inline Tcl_Obj* toTcl(const Value& value) {
    return std::visit([](const auto& plain) { return toTcl(plain); }, value);
}
inline Tcl_Obj* toTcl(const scripts::OrNone& value) { return toTcl(value.text); }
inline Tcl_Obj* toTcl(scripts::Word word) { return toTcl(word.text); }

template <typename Items, typename Convert>
Obj listOf(const Items& items, Convert&& convert) {
    Obj list(Tcl_NewListObj(0, nullptr));
    for (const auto& item : items) {
        const Obj converted = convert(item);
        Tcl_ListObjAppendElement(nullptr, list.get(), converted.get());
    }
    return list;
}
template <typename Item>
Tcl_Obj* toTcl(const std::vector<Item>& items) {
    return toTcl(listOf(items, [](const auto& item) { return Obj(toTcl(item)); }));
}
template <typename Item>
Tcl_Obj* toTcl(const std::optional<Item>& item) {
    return item ? toTcl(*item) : Tcl_NewObj();
}

/// A dict that is being made.
class Dict {
public:
    template <typename Value>
    Dict& put(const char* key, const Value& value) {
        if constexpr (std::same_as<Value, Obj>) set(key, value.get());
        else set(key, toTcl(value));
        return *this;
    }
    /// At the end.
    Obj obj() { return std::move(dict_); }

private:
    void set(const char* key, Tcl_Obj* value) {
        Tcl_DictObjPut(nullptr, dict_.get(), Tcl_NewStringObj(key, -1), value);
    }

    Obj dict_ = Obj(Tcl_NewDictObj());
};

/// The bytes behind a text, as toTcl made them.
std::string textOf(Tcl_Obj* text);
/// The name of a file as the system has it; throws ResultIsSet.
std::string pathOf(Tcl_Interp* interp, Tcl_Obj* path);

// Values of a script; what cannot be one throws Refused.
bool boolOf(Tcl_Obj* word);
int intOf(Tcl_Obj* word);
double doubleOf(Tcl_Obj* word);
std::vector<Tcl_Obj*> wordsOf(Tcl_Interp* interp, Tcl_Obj* list);

// Errors, as exceptions.

/// An error with an error code.
class Refused : public std::runtime_error {
public:
    Refused(std::vector<std::string> code, const std::string& message)
        : std::runtime_error(message), code_(std::move(code)) {}
    const std::vector<std::string>& code() const { return code_; }

private:
    std::vector<std::string> code_;
};
/// The interpreter's result says it already.
struct ResultIsSet {};
/// A script that was called back ended so.
struct CallbackEnded {
    Tcl_InterpState state;
    int code;
};

/// Sets result and options for the exception that is being handled; the status for Tcl.
int setTclError(Tcl_Interp* interp) noexcept;

/// Runs what gives the result of a command; exceptions become Tcl's errors.
template <typename Work>
int guarded(Tcl_Interp* interp, Work&& work) noexcept {
    try {
        Tcl_Obj* const result = work();
        Tcl_SetObjResult(interp, result);
        return TCL_OK;
    } catch (...) {
        return setTclError(interp);
    }
}

/// Calls a command prefix with more words, without the lock. Throws CallbackEnded for an error; other codes are
/// returned.
int callBack(Tcl_Interp* interp, Tcl_Obj* prefix, const std::vector<Obj>& more);

} // namespace hdnt::tcl
