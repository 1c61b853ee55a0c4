#include "author/exchange/BlockWords.h"
#include "author/exchange/codeNames.internal.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/fileNames.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace hdnt::author {

namespace {

using words::cell;

// Keywords of C++ and Python, macros that headers of C have, and what exports declare or use themselves.
constexpr std::string_view takenWords =
    " alignas alignof and and_eq asm auto bitand bitor bool break case catch char char16_t char32_t char8_t "
    "class co_await co_return co_yield compl concept const const_cast consteval constexpr constinit continue "
    "decltype default delete do double dynamic_cast else enum explicit export extern false float for friend "
    "goto if inline int long mutable namespace new noexcept not not_eq nullptr operator or or_eq private "
    "protected public register reinterpret_cast requires return short signed sizeof static static_assert "
    "static_cast struct switch template this thread_local throw true try typedef typeid typename union unsigned "
    "using virtual void volatile wchar_t while xor xor_eq "
    "False None True as assert async await def del elif except finally from global import in is lambda nonlocal pass "
    "raise with yield "
    "BUFSIZ EOF HUGE_VAL INFINITY NAN NULL RAND_MAX WEOF errno linux stderr stdin stdout unix "
    "E2BIG EACCES EADDRINUSE EADDRNOTAVAIL EAFNOSUPPORT EAGAIN EALREADY EBADF EBADMSG EBUSY ECANCELED ECHILD "
    "ECONNABORTED ECONNREFUSED ECONNRESET EDEADLK EDESTADDRREQ EDOM EEXIST EFAULT EFBIG EHOSTUNREACH EIDRM EILSEQ "
    "EINPROGRESS EINTR EINVAL EIO EISCONN EISDIR ELOOP EMFILE EMLINK EMSGSIZE ENAMETOOLONG ENETDOWN ENETRESET "
    "ENETUNREACH ENFILE ENOBUFS ENODATA ENODEV ENOENT ENOEXEC ENOLCK ENOLINK ENOMEM ENOMSG ENOPROTOOPT ENOSPC ENOSR "
    "ENOSTR ENOSYS ENOTCONN ENOTDIR ENOTEMPTY ENOTRECOVERABLE ENOTSOCK ENOTSUP ENOTTY ENXIO EOPNOTSUPP EOVERFLOW "
    "EOWNERDEAD EPERM EPIPE EPROTO EPROTONOSUPPORT EPROTOTYPE ERANGE EROFS ESPIPE ESRCH ETIME ETIMEDOUT ETXTBSY "
    "EWOULDBLOCK EXDEV "
    "Block Pin Property Value blockNames defaultValue enumOf hdnt_names mro namesOf pinNames propertyNames std textOf "
    "valueNames ";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isPart(char c) { return isLetter(c) || (c >= '0' && c <= '9'); }

// The name itself when it is an identifier. None has two "_" in a row, which C++ keeps for itself.
std::string identifierFor(const std::string& name) {
    std::string text;
    for (const char c : name)
        if (isPart(c) || !text.ends_with('_')) text += isPart(c) ? c : '_';
    while (text.ends_with('_') && text != name) text.pop_back();
    if (!text.empty() && !isLetter(text.front())) text = "n" + text;
    if (text.empty()) text = "unnamed";
    return takenWords.find(" " + text + " ") == takenWords.npos ? text : text + "_";
}

/// A scope of names that each have a text.
class Scope {
public:
    void add(const std::string& text, const std::string& name) {
        if (!seen_.insert(text).second) return;
        texts_.push_back(text);
        names_.push_back(name);
    }

    CodeEnum enumeration(const std::string& where, ExportNotes& notes) const {
        CodeEnum result{texts_, identifiersOf(names_)};
        for (std::size_t i = 0; i < names_.size(); ++i) notes.rename(where, names_[i], result.identifiers[i]);
        return result;
    }

private:
    std::set<std::string> seen_;
    std::vector<std::string> texts_;
    std::vector<std::string> names_;
};

Scope pinsOf(const Json& block) {
    std::map<std::string, int> uses;
    for (const Json& bus : block["buses"]) ++uses[cell(bus["baseName"])];
    Scope scope;
    for (const Json& bus : block["buses"])
        scope.add(cell(bus["name"]), cell(bus[uses[cell(bus["baseName"])] == 1 ? "baseName" : "name"]));
    return scope;
}

CodeEnum valuesOf(const Json& property, const std::string& where, ExportNotes& notes) {
    Scope scope;
    if (property["type"] == "string")
        for (const Json& value : property["values"]) scope.add(cell(value), cell(value));
    return scope.enumeration(where + cell(property["name"]) + ": ", notes);
}

} // namespace

std::vector<std::string> identifiersOf(const std::vector<std::string>& names) {
    std::vector<std::string> identifiers;
    std::map<std::string, int> uses;
    for (const std::string& name : names) ++uses[identifiers.emplace_back(identifierFor(name))];
    std::set<std::string> taken(identifiers.begin(), identifiers.end());
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string& identifier = identifiers[i];
        if (identifier == names[i] || uses[identifier] == 1) continue;
        identifier += (identifier.ends_with('_') ? "" : "_") + shortSumOf(names[i]);
        while (!taken.insert(identifier).second) identifier += "x";
    }
    return identifiers;
}

const std::string& CodeEnum::identifierOf(const std::string& text) const {
    return identifiers[std::ranges::find(texts, text) - texts.begin()];
}

bool CodeProperty::hasDefault() const { return !(*facts)["default"].is_null() && (*facts)["defaultRefusal"].is_null(); }

const std::string& CodeProperty::defaultIdentifier() const { return values.identifierOf(cell(listedDefault(*facts))); }

CodeBlock::CodeBlock(const Json& block, ExportNotes& notes) {
    const std::string name = cell(block["name"]);
    const std::string where = name + ": ";
    if (notes.blocks.identifiers.empty()) notes.blocks.identifiers = identifiersOf(notes.blocks.texts);
    identifier = notes.blocks.identifierOf(name);
    notes.rename("", name, identifier);
    pins = pinsOf(block).enumeration(where, notes);
    Scope scope;
    for (const Json& property : block["properties"]) {
        const std::string propertyName = cell(property["name"]);
        if (property["foundByName"] != true) {
            notes.leaveOut(block, {platform::printable(propertyName) + ": declared before"});
            continue;
        }
        scope.add(propertyName, propertyName);
        properties.push_back({&property, valuesOf(property, where, notes)});
    }
    propertyNames = scope.enumeration(where, notes);
}

} // namespace hdnt::author
