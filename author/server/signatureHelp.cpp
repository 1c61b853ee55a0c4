// What a call takes that is being typed.
#include "author/server/Declarations.internal.h"
#include "author/server/NameRequest.internal.h"
#include "author/server/keywords.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/frontend/TokenSet.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

using frontend::TokenSet;

/// A call that an offset is in the arguments of.
struct OpenCall {
    std::string_view function;
    std::size_t argument = 0; ///< from 0
};

// Of a word before a parenthesis, these say that it is being declared.
constexpr TokenSet declaring = frontend::types | TokenSet{T_Function};
constexpr TokenSet ofExpressions =
    frontend::constants | frontend::operators | TokenSet{T_Identifier, '(', ')', ',', '!'};

// No node says that of a text that is being typed, so the items before the offset do, as far as they may be in one
// expression.
std::optional<OpenCall> callAround(const frontend::SourceItems& items, std::size_t offset) {
    std::size_t commas = 0, closed = 0;
    for (std::size_t item = offset == 0 ? 0 : itemBehind(items, offset - 1); item-- > 0;) {
        const int kind = items[item].kind;
        if (kind > 0 && !ofExpressions.contains(kind)) return {};
        if (kind == ')') ++closed;
        if (kind == ',' && closed == 0) ++commas;
        if (kind != '(') continue;
        if (closed > 0) {
            --closed;
            continue;
        }
        const bool isCall = item > 0 && items[item - 1].kind == T_Identifier;
        const bool isDeclared = item > 1 && declaring.contains(items[item - 2].kind);
        if (isCall && !isDeclared) return OpenCall{items.textOf(item - 1), commas};
        commas = 0;
    }
    return {};
}

/// What is said of a function.
struct Signature {
    std::string name;
    std::string result;
    std::vector<std::string> parameters;
    std::string sentence;
};

Signature signatureOf(const Place& declaration) {
    Signature signature{
        std::string(declaration.text->textOf(nameItemOf(declaration))), {}, {}, commentAbove(declaration)};
    for (std::uint32_t item = declaration.get().begin; item < declaration.get().end; ++item) {
        if (!frontend::types.contains(declaration.text->items()[item].kind)) continue;
        const std::string type(declaration.text->textOf(item));
        if (item < nameItemOf(declaration)) signature.result = type;
        else signature.parameters.push_back(type);
    }
    return signature;
}

// As the library declares it, and else as it would have to.
std::optional<Signature> signatureOf(const Libraries& libraries, std::string_view function) {
    const StandardFunction* const standard = findStandardFunction(function);
    std::optional<Signature> signature;
    if (const Place declared = findFunction(libraries, function, libraries.current().level))
        signature = signatureOf(declared);
    else if (standard) signature = {std::string(function), std::string(standard->result), {"string"}, {}};
    if (standard && signature->sentence.empty()) signature->sentence = standard->sentence;
    return signature;
}

// Of more arguments than it takes, none is active: an editor would show the first one.
Json jsonOf(const Signature& signature, std::size_t argument, bool knowsOffsets) {
    std::string label = signature.result + (signature.result.empty() ? "" : " ") + signature.name + '(';
    Json parameters = Json::array();
    for (const std::string& type : signature.parameters) {
        if (!parameters.empty()) label += ", ";
        const Json offsets = {label.size(), label.size() + type.size()};
        parameters.push_back({{"label", knowsOffsets ? offsets : Json(type)}});
        label += type;
    }
    Json one = {{"label", label + ')'}};
    if (!signature.sentence.empty()) one["documentation"] = signature.sentence;
    Json help = {{"activeSignature", 0}};
    if (argument < parameters.size()) {
        one["parameters"] = std::move(parameters);
        help["activeParameter"] = argument;
    }
    help["signatures"] = Json::array({std::move(one)});
    return help;
}

} // namespace

Json signatureHelp(Session& session, const Json& params) {
    const Libraries libraries(session, session.uriOf(params));
    const Text& text = libraries.current();
    const std::size_t offset = text.document->offsetAt(positionOf(params.at("position")), session.encoding);
    const std::optional<OpenCall> call = callAround(text.items(), offset);
    const std::optional<Signature> signature = call ? signatureOf(libraries, call->function) : std::nullopt;
    if (!signature) return nullptr;
    const bool knowsOffsets =
        session.canClient("/textDocument/signatureHelp/signatureInformation/parameterInformation/labelOffsetSupport");
    return jsonOf(*signature, call->argument, knowsOffsets);
}

} // namespace hdnt::author::server
