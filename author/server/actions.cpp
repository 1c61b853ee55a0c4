// What mends a fault when it is chosen.
#include "author/lint/nearestNames.h"
#include "author/server/Workspace.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

constexpr const char* quickFix = "quickfix";
constexpr const char* rewrite = "refactor.rewrite";
constexpr const char* fixAll = "source.fixAll";

bool begins(const std::string& kind, const std::string& wanted) {
    return kind.starts_with(wanted) && (kind.size() == wanted.size() || kind[wanted.size()] == '.' || wanted.empty());
}

std::string shown(std::string_view text) {
    constexpr std::size_t most = 40;
    return "'" + std::string(text.substr(0, most)) + (text.size() > most ? "...'" : "'");
}

class Actions {
public:
    Actions(Session& session, const Json& params, const Document& document)
        : session_(session), uri_(session.uriOf(params)), context_(params.at("context")), document_(document),
          begin_(offsetAt(params.at("range").at("start"))), end_(offsetAt(params.at("range").at("end"))) {}

    Json list() {
        if (wants(quickFix)) {
            for (const SyntaxMessage& message : document_.tree().messages())
                if (message.mend)
                    addMend({message.offset, message.offset + std::size_t{message.length}},
                            std::string(syntaxRules()[static_cast<std::size_t>(message.code)].name), *message.mend);
            forEachMended([&](const Found& found, const SyntaxMend& mend) {
                addMend(*found.spot.bytes, found.said.value("code", ""), mend);
            });
            for (const Json& said : context_.value("diagnostics", Json::array())) addSuggestions(said);
        }
        if (wants(rewrite)) addConnects();
        if (wants(fixAll)) addAll();
        return std::move(all_);
    }

private:
    std::size_t offsetAt(const Json& position) const {
        return document_.offsetAt(positionOf(position), session_.encoding);
    }

    bool wants(const std::string& kind) const {
        const auto only = context_.find("only");
        if (only == context_.end()) return true;
        return std::any_of(only->begin(), only->end(),
                           [&](const Json& wanted) { return begins(kind, wanted.get_ref<const std::string&>()); });
    }

    // What was found with the library, and there is one way to mend.
    template <typename Visit>
    void forEachMended(Visit&& visit) const {
        for (const FoundInFile* in : session_.libraries.in(pathOf(uri_)))
            for (const Found& found : in->list)
                if (const std::optional<SyntaxMend> mend = mendOf(document_, found)) visit(found, *mend);
    }

    Json editOf(const SyntaxMend& mend) const {
        PositionFinder positions(document_, session_.encoding);
        return {{"range", rangeOf(positions, mend.offset, mend.offset + mend.length)}, {"newText", mend.text}};
    }

    std::string titleOf(const SyntaxMend& mend) const {
        const std::string_view old = document_.text().substr(mend.offset, mend.length);
        const std::size_t first = mend.text.find_first_not_of(" \n");
        if (first == mend.text.npos)
            return "Remove " + shown(old.substr(std::min(old.find_first_not_of(" \t"), old.size())));
        return (mend.length == 0 ? "Insert " : "Write ") + shown(std::string_view(mend.text).substr(first));
    }

    // The client's own, so that it knows which of them goes.
    Json saidAt(const Json& range, const std::string& code) const {
        Json found = Json::array();
        for (const Json& said : context_.value("diagnostics", Json::array()))
            if (said.at("range").at("start") == range.at("start") && said.value("code", Json()) == code)
                found.push_back(said);
        return found;
    }

    void add(std::string title, const char* kind, Json diagnostics, Json edits, bool isPreferred) {
        Json action = {{"title", std::move(title)},
                       {"kind", kind},
                       {"edit", workspaceEdit(session_, {{uri_, document_.version, std::move(edits)}})}};
        if (!diagnostics.empty()) action["diagnostics"] = std::move(diagnostics);
        if (isPreferred) action["isPreferred"] = true;
        all_.push_back(std::move(action));
    }

    void addMend(const Stretch& about, const std::string& code, const SyntaxMend& mend) {
        if (about.begin > end_ || begin_ > about.end) return;
        PositionFinder positions(document_, session_.encoding);
        Json said = saidAt(rangeOf(positions, about.begin, about.end), code);
        add(titleOf(mend), quickFix, std::move(said), Json::array({editOf(mend)}), true);
    }

    // Names that a message has for the one that stands for nothing.
    void addSuggestions(const Json& said) {
        const auto& message = said.at("message").get_ref<const std::string&>();
        const std::vector<std::string> names = suggestionsIn(message);
        const std::size_t begin = offsetAt(said.at("range").at("start"));
        const std::size_t end = std::max(begin, offsetAt(said.at("range").at("end")));
        const std::string_view text = document_.text().substr(begin, end - begin);
        const std::optional<std::string> wrong = quotedIn(message, text);
        if (!wrong) return;
        for (const std::string& name : names) {
            const auto at = static_cast<std::uint32_t>(begin + text.find(*wrong));
            const SyntaxMend mend{at, static_cast<std::uint32_t>(wrong->size()), name};
            add(titleOf(mend), quickFix, Json::array({said}), Json::array({editOf(mend)}), names.size() == 1);
        }
    }

    // The first name in quotes of a message that stands in the text, and once.
    static std::optional<std::string> quotedIn(const std::string& message, std::string_view text) {
        for (std::size_t open = message.find('"'); open != message.npos;) {
            const std::size_t close = message.find('"', open + 1);
            if (close == message.npos) break;
            std::string name = message.substr(open + 1, close - open - 1);
            const std::size_t at = name.empty() ? text.npos : text.find(name);
            if (at != text.npos && text.find(name, at + 1) == text.npos) return name;
            open = message.find('"', close + 1);
        }
        return std::nullopt;
    }

    void addConnects() {
        PositionFinder positions(document_, session_.encoding);
        const Json place = {{"textDocument", {{"uri", uri_}}}, {"position", jsonOf(positions.at(begin_))}};
        const std::optional<MissingConnects> missing = missingConnects(session_, place);
        if (!missing) return;
        const SyntaxMend mend{static_cast<std::uint32_t>(missing->offset), 0, missing->text};
        add("Connect the " + std::to_string(missing->count) + " open pins of " + shown(missing->instance), rewrite,
            Json::array(), Json::array({editOf(mend)}), false);
    }

    // Those that touch no other one, in the order of the text.
    void addAll() {
        std::vector<SyntaxMend> mends;
        for (const SyntaxMessage& message : document_.tree().messages())
            if (message.mend) mends.push_back(*message.mend);
        forEachMended([&](const Found&, const SyntaxMend& mend) { mends.push_back(mend); });
        std::sort(mends.begin(), mends.end(), [](const auto& a, const auto& b) { return a.offset < b.offset; });
        Json edits = Json::array();
        std::size_t end = 0;
        for (const SyntaxMend& mend : mends) {
            if (!edits.empty() && mend.offset <= end) continue;
            edits.push_back(editOf(mend));
            end = std::size_t{mend.offset} + mend.length;
        }
        if (!edits.empty())
            add("Mend all that there is one way to mend", fixAll, Json::array(), std::move(edits), false);
    }

    Session& session_;
    const std::string& uri_;
    const Json& context_;
    const Document& document_;
    std::size_t begin_;
    std::size_t end_;
    Json all_ = Json::array();
};

} // namespace

// A client that knows commands alone gets none: they would have to be carried out here.
Json codeActions(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const bool takesActions =
        session.clientCapabilities.contains("/textDocument/codeAction/codeActionLiteralSupport"_json_pointer);
    return takesActions ? Actions(session, params, document).list() : Json::array();
}

} // namespace hdnt::author::server
