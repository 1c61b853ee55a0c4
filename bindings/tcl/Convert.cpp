#include "bindings/tcl/Convert.h"

#include "bindings/shared/Places.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

namespace hdnt::tcl {

namespace {

// Length of the well-formed sequence that begins here; 0 when none does.
size_t sequenceAt(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(at + i < text.size() ? text[at + i] : 0); };
    const auto follows = [&](size_t i, unsigned char from = 0x80, unsigned char to = 0xBF) {
        return byte(i) >= from && byte(i) <= to;
    };
    const unsigned char first = byte(0);
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const unsigned char from = first == 0xE0 ? 0xA0 : 0x80;
        const unsigned char to = first == 0xED ? 0x9F : 0xBF;
        return follows(1, from, to) && follows(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const unsigned char from = first == 0xF0 ? 0x90 : 0x80;
        const unsigned char to = first == 0xF4 ? 0x8F : 0xBF;
        return follows(1, from, to) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

void appendCharacter(std::string& text, unsigned code) {
    if (code >= 0x10000) text += {char(0xF0 | code >> 18), char(0x80 | (code >> 12 & 0x3F))};
    else text += char(0xE0 | code >> 12);
    text += {char(0x80 | (code >> 6 & 0x3F)), char(0x80 | (code & 0x3F))};
}

// The surrogate that begins here in Tcl's own coding, or 0.
unsigned surrogateAt(std::string_view text, size_t at) {
    if (at + 2 >= text.size() || static_cast<unsigned char>(text[at]) != 0xED) return 0;
    const unsigned code = 0xD000u | (static_cast<unsigned char>(text[at + 1]) & 0x3Fu) << 6 |
                          (static_cast<unsigned char>(text[at + 2]) & 0x3Fu);
    return code >= 0xD800 ? code : 0;
}

bool isPlain(std::string_view text) {
    for (const char byte : text)
        if (byte <= 0) return false;
    return true;
}

} // namespace

Tcl_Obj* toTcl(std::string_view text) {
    if (isPlain(text)) return Tcl_NewStringObj(text.data(), static_cast<int>(text.size()));
    std::string own; // a NUL has two bytes there
    for (size_t at = 0; at < text.size();) {
        const size_t length = sequenceAt(text, at);
        if (text[at] == '\0') own += "\xC0\x80";
        else if (length > 0) own.append(text, at, length);
        else appendCharacter(own, 0xDC00u + static_cast<unsigned char>(text[at]));
        at += std::max<size_t>(length, 1);
    }
    return Tcl_NewStringObj(own.data(), static_cast<int>(own.size()));
}

std::string textOf(Tcl_Obj* word) {
    int size = 0;
    const char* const bytes = Tcl_GetStringFromObj(word, &size);
    const std::string_view own(bytes, static_cast<size_t>(size));
    if (isPlain(own)) return std::string(own);
    std::string text;
    for (size_t at = 0; at < own.size();) {
        const unsigned code = surrogateAt(own, at);
        const unsigned next = code >= 0xD800 && code < 0xDC00 ? surrogateAt(own, at + 3) : 0;
        if (next >= 0xDC00) {
            appendCharacter(text, 0x10000 + ((code - 0xD800) << 10) + (next - 0xDC00));
            at += 6;
        } else if (code >= 0xDC80 && code <= 0xDCFF) {
            text += char(code - 0xDC00);
            at += 3;
        } else if (own.substr(at, 2) == "\xC0\x80") {
            text += '\0';
            at += 2;
        } else text += own[at++];
    }
    return text;
}

std::string pathOf(Tcl_Interp* interp, Tcl_Obj* path) {
    if (Tcl_FSConvertToPathType(interp, path) != TCL_OK) throw ResultIsSet();
    const auto* const native = static_cast<const char*>(Tcl_FSGetNativePath(path));
    Tcl_StatBuf* const status = Tcl_AllocStatBuf();
    const int found = native ? Tcl_FSStat(path, status) : -1;
    ckfree(reinterpret_cast<char*>(status));
    if (found == 0) return native;
    if (!native) Tcl_SetErrno(ENOENT);
    const char* const reason = Tcl_PosixError(interp);
    Tcl_SetObjResult(interp, Tcl_ObjPrintf("couldn't open \"%s\": %s", Tcl_GetString(path), reason));
    throw ResultIsSet();
}

Tcl_Obj* toTcl(File file) {
    if (isPlain(file.name)) return toTcl(file.name);
    Tcl_DString text;
    Tcl_ExternalToUtfDString(nullptr, file.name.data(), static_cast<int>(file.name.size()), &text);
    Tcl_Obj* const object = Tcl_NewStringObj(Tcl_DStringValue(&text), Tcl_DStringLength(&text));
    Tcl_DStringFree(&text);
    return object;
}

static Tcl_Obj* orNothing(int number) { return number == 0 ? Tcl_NewObj() : toTcl(number); }

static Dict& putPlace(Dict& dict, const Place& at) {
    return dict.put("file", File{at.file})
        .put("line", orNothing(at.line))
        .put("column", orNothing(at.column))
        .put("end_column", orNothing(at.endColumn));
}

Tcl_Obj* toTcl(const Place& at) {
    Dict dict;
    return toTcl(putPlace(dict, at).obj());
}

Tcl_Obj* toTcl(const yyltype& at) { return toTcl(scripts::placeOf(at)); }

Tcl_Obj* toTcl(const Diagnostic& diagnostic) {
    const Obj related = listOf(diagnostic.related, [](const RelatedPlace& one) {
        return Dict().put("location", one.place).put("message", one.message).obj();
    });
    Dict dict;
    dict.put("severity", nameOf(diagnostic.severity)).put("code", diagnostic.code);
    putPlace(dict, diagnostic.place).put("message", diagnostic.message).put("detail", diagnostic.detail);
    return toTcl(dict.put("text", diagnostic.place.text).put("related", related).obj());
}

bool boolOf(Tcl_Obj* word) {
    int value = 0;
    if (Tcl_GetBooleanFromObj(nullptr, word, &value) == TCL_OK) return value != 0;
    throw Refused({"HDNT", "VALUE"}, "expected boolean value but got \"" + textOf(word) + "\"");
}

int intOf(Tcl_Obj* word) {
    Tcl_WideInt value = 0;
    if (Tcl_GetWideIntFromObj(nullptr, word, &value) != TCL_OK)
        throw Refused({"HDNT", "VALUE"}, "expected integer but got \"" + textOf(word) + "\"");
    if (value > INT_MAX || value < INT_MIN)
        throw Refused({"HDNT", "VALUE"}, "the number " + textOf(word) + " has more than 32 bits");
    return static_cast<int>(value);
}

double doubleOf(Tcl_Obj* word) {
    double value = 0;
    if (Tcl_GetDoubleFromObj(nullptr, word, &value) == TCL_OK) return value;
    throw Refused({"HDNT", "VALUE"}, "expected floating-point number but got \"" + textOf(word) + "\"");
}

std::vector<Tcl_Obj*> wordsOf(Tcl_Interp* interp, Tcl_Obj* list) {
    int count = 0;
    Tcl_Obj** words = nullptr;
    if (Tcl_ListObjGetElements(interp, list, &count, &words) != TCL_OK) throw ResultIsSet();
    return {words, words + count};
}

static int fail(Tcl_Interp* interp, const std::vector<std::string>& code, const std::string& message) {
    Tcl_SetObjResult(interp, toTcl(message));
    Tcl_SetObjErrorCode(interp, toTcl(code));
    return TCL_ERROR;
}

static std::string line(const Diagnostic& error) {
    const bool isPlaced = !error.place.file.empty() || error.place.isKnown();
    return (isPlaced ? describe(error.place) + ": " : "") + "error: " + textOf(error);
}

static int fail(Tcl_Interp* interp, const scripts::LoadFailure& failure) {
    std::string message;
    size_t errors = 0;
    for (const Diagnostic& one : failure.diagnostics())
        if (one.severity == Severity::error) message += (errors++ > 0 ? "\n" : "") + line(one);
    if (errors == 0) message = failure.path() + ": " + failure.what();
    Tcl_SetObjResult(interp, toTcl(message));
    const std::vector<std::string> code = {"HDNT", "LOAD", std::to_string(errors)};
    Dict options;
    options.put("-code", TCL_ERROR).put("-level", 0).put("-errorcode", code);
    options.put("-diagnostics", failure.diagnostics()).put("-path", File{failure.path()});
    const Obj all = options.obj();
    return Tcl_SetReturnOptions(interp, all.get());
}

int setTclError(Tcl_Interp* interp) noexcept {
    try {
        throw;
    } catch (const ResultIsSet&) {
        return TCL_ERROR;
    } catch (const CallbackEnded& ended) {
        return Tcl_RestoreInterpState(interp, ended.state);
    } catch (const scripts::LoadFailure& failure) {
        return fail(interp, failure);
    } catch (const DeadHandle& dead) {
        return fail(interp, {"HDNT", "DEAD", dead.word(), dead.name()}, dead.what());
    } catch (const Gone& gone) {
        return fail(interp, {"HDNT", "DEAD"}, gone.what());
    } catch (const Refused& refused) {
        return fail(interp, refused.code(), refused.what());
    } catch (const std::bad_alloc&) {
        return fail(interp, {"HDNT", "MEMORY"}, "not enough memory");
    } catch (const std::exception& error) {
        return fail(interp, {"HDNT", "ERROR"}, error.what());
    } catch (...) {
        return fail(interp, {"HDNT", "ERROR"}, "an exception of no known kind");
    }
}

int callBack(Tcl_Interp* interp, Tcl_Obj* prefix, const std::vector<Obj>& more) {
    std::vector<Obj> held;
    for (Tcl_Obj* word : wordsOf(interp, prefix)) held.emplace_back(word);
    for (const Obj& word : more) held.push_back(word);
    std::vector<Tcl_Obj*> words;
    words.reserve(held.size());
    for (const Obj& word : held) words.push_back(word.get());
    int code = TCL_OK;
    {
        const Unlocked unlocked;
        code = Tcl_EvalObjv(interp, static_cast<int>(words.size()), words.data(), 0);
    }
    if (code == TCL_ERROR) throw CallbackEnded{Tcl_SaveInterpState(interp, code), code};
    return code;
}

} // namespace hdnt::tcl
