// Another name for what a name stands for, at all of its places.
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

using Kind = Name::Kind;

[[noreturn]] void refuse(const std::string& why) { throw RequestError(ErrorCode::requestFailed, why); }

std::string inQuotes(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string fileOf(const Text& text) {
    return text.path.empty() ? text.uri : std::filesystem::path(text.path).filename().string();
}

std::string placeOf(const Name& name) {
    const Text& text = *name.at.text;
    return fileOf(text) + ':' + std::to_string(text.document->lines().lineAt(name.stretch.begin) + 1);
}

/// What of a name is written anew: all but its range.
Stretch baseIn(const Name& name) {
    const bool mayHaveRange = name.key.kind == Kind::pin || name.key.kind == Kind::signal;
    const std::string_view written = name.written();
    return {name.stretch.begin, name.stretch.begin + (mayHaveRange ? baseOf(written) : written).size()};
}

bool isPlain(const std::string& name) {
    return std::ranges::all_of(name,
                               [](unsigned char c) { return (c < 0x80 && std::isalnum(c)) || c == '_' || c == '@'; });
}

bool isIdentifier(const std::string& word) {
    frontend::SourceItems items;
    frontend::SourceProblem problem;
    return items.read(word, problem) && items.size() == 1 && items[0].kind == T_Identifier &&
           items[0].length == word.size();
}

/// Signals of these names are high and low, whatever drives them.
bool isConstant(std::string_view name, Kind kind) { return kind == Kind::signal && (name == "@0" || name == "@1"); }

/// Why the language, or the loader, does not take the name; empty: it does.
std::string faultOf(const std::string& name, Kind kind, bool isBus) {
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 0x7f; };
    if (name.empty()) return "a name has at least one character";
    if (kind == Kind::function)
        return isIdentifier(name) ? ""
                                  : "a function is named by up to 31 letters, digits and underscores, and no keyword";
    if (name.find('"') != name.npos || std::ranges::any_of(name, isControl))
        return "no name holds a quote, a line end or a control character";
    if (kind == Kind::instance) return {};
    if (name.find_first_of("[]") != name.npos) return "only the name before the brackets is changed";
    if (kind == Kind::signal) return isConstant(name, kind) ? "a signal of that name is a constant" : "";
    if (!isPlain(name)) return "such a name consists of letters, digits, underscores and \"@\"";
    if (isBus && name.find('@') != name.npos) return "the name of a bus has no \"@\"";
    if (kind == Kind::pin && HSTStringUtils::to_upper_copy(name) != name)
        return "a pin with lower-case letters in its name is found by nobody";
    return {};
}

std::string withoutQuotes(std::string name) {
    if (name.size() > 1 && name.starts_with('"') && name.ends_with('"')) return name.substr(1, name.size() - 2);
    return name;
}

class Renaming {
public:
    /// Throws RequestError when there is no name there, or one that is not the library's own.
    Renaming(Session& session, const Json& params) : session_(session), asked_(session, params) {
        if (!asked_.name || asked_.name->key.kind == Kind::file || oldName().empty())
            refuse("here is no name that can be changed");
        if (isConstant(oldName(), asked_.name->key.kind)) refuse(inQuotes(oldName()) + " is a constant");
        const std::vector<Place> declarations = declarationsOf(asked_.libraries, *asked_.name, asked_.mapping);
        if (declarations.empty()) refuse(inQuotes(oldName()) + " is declared nowhere");
        for (const Place& place : declarations) {
            if (place.text->level != asked_.text().level)
                refuse(inQuotes(oldName()) + " is declared in a parent library, in " + fileOf(*place.text));
            isBus_ = isBus_ || baseOf(nameOf(place)) != nameOf(place);
        }
        views_.push_back({asked_.libraries, *asked_.name, asked_.mapping});
    }

    Json prepared() const {
        return {{"range", Locations(session_.encoding).rangeIn(asked_.text(), baseIn(*asked_.name))},
                {"placeholder", oldName()}};
    }

    Json to(const std::string& newName) {
        const std::string fault = faultOf(newName, asked_.name->key.kind, isBus_);
        if (!fault.empty()) refuse(inQuotes(newName) + " cannot be written here: " + fault);
        if (asked_.name->key.kind == Kind::block) requireNoFile();
        if (!isOfMapping()) addViews();
        for (const View& view : views_) requireFree(view, newName);
        return workspaceEdit(session_, editsTo(newName));
    }

private:
    /// The name as it stands in a text of the libraries of a file.
    struct View {
        const Libraries& libraries;
        Name name;
        Place mapping;
    };
    using Places = std::map<std::string, std::pair<const Text*, std::set<std::pair<std::size_t, std::size_t>>>>;

    std::string_view oldName() const {
        const Stretch base = baseIn(*asked_.name);
        return asked_.name->written().substr(0, base.end - base.begin);
    }

    // A map library would have to be called otherwise.
    void requireNoFile() const {
        for (const Text& text : asked_.libraries.texts())
            if (Libraries::isMapLibrary(text.path) && std::filesystem::path(text.path).stem() == oldName())
                refuse(inQuotes(oldName()) + " has a map library of its name, " + fileOf(text));
    }

    // From the libraries of the workspace that have this one as a parent.
    void addViews() {
        for (const std::string& path : textsOver(session_, asked_.text().path)) {
            others_.push_back(Libraries::ofFile(session_, path));
            const Text* const text = others_.back()->textAt(asked_.text().path);
            if (!text) continue;
            std::optional<Name> name = NameReader(*others_.back(), *text).at(asked_.name->item);
            if (name && name->key == asked_.name->key) views_.push_back({*others_.back(), *name, {}});
        }
    }

    // A name that stands anywhere already would be one with this one, declared or not.
    static void requireFree(const View& view, const std::string& newName) {
        Name wanted = view.name;
        const bool countsCase = wanted.key.kind != Kind::block && wanted.key.kind != Kind::property;
        wanted.key.text = countsCase ? newName : HSTStringUtils::to_upper_copy(newName);
        if (wanted.key == view.name.key) return;
        Mentions(view.libraries, wanted, view.mapping).forEach([&](const Name& other) {
            refuse(inQuotes(newName) + " is taken: " + placeOf(other) + " has it");
        });
        Place hiding; // what a library over this one would find instead
        if (wanted.key.kind == Kind::block) hiding = findBlock(view.libraries, wanted.key.text);
        if (wanted.key.kind == Kind::function) hiding = findFunction(view.libraries, wanted.key.text);
        if (hiding) refuse(inQuotes(newName) + " is taken in a library over this one, in " + fileOf(*hiding.text));
    }

    // Else the name would change for somebody who still has the old one.
    void requireOneReader(const View& view, const Text& text) const {
        std::size_t readers = 0;
        for (const Text& other : view.libraries.texts())
            for (const std::uint32_t item : other.document->fileStatements())
                readers += view.libraries.inclusionOf(other, item).path == text.path ? 1 : 0;
        const bool isMappingElsewhere = text.tree().content() == NtlList::statements && asked_.mapping.text == &text;
        if (readers > 1) refuse(fileOf(text) + " is included more than once");
        if (readers == 1 && isMappingElsewhere && isOfMapping())
            refuse(fileOf(text) + " is a part of a mapping in another file");
    }
    bool isOfMapping() const {
        return asked_.name->key.kind == Kind::instance || asked_.name->key.kind == Kind::signal;
    }

    std::vector<TextEdits> editsTo(const std::string& newName) const {
        Places places;
        for (const View& view : views_)
            Mentions(view.libraries, view.name, view.mapping).forEach([&](const Name& name) {
                auto& [text, stretches] = places[name.at.text->uri];
                if (stretches.empty()) requireOneReader(view, *name.at.text);
                text = name.at.text;
                const Stretch base = baseIn(name);
                stretches.emplace(base.begin, base.end);
            });
        std::vector<TextEdits> all;
        Locations locations(session_.encoding);
        for (const auto& [uri, in] : places) {
            Json edits = Json::array();
            for (const auto& [begin, end] : in.second)
                edits.push_back({{"range", locations.rangeIn(*in.first, {begin, end})}, {"newText", newName}});
            all.push_back({uri, in.first->document->version, std::move(edits)});
        }
        return all;
    }

    Session& session_;
    NameRequest asked_;
    std::vector<std::unique_ptr<Libraries>> others_;
    std::vector<View> views_; ///< the first is that of the document
    bool isBus_ = false;      ///< declared with a range
};

} // namespace

Json prepareRename(Session& session, const Json& params) { return Renaming(session, params).prepared(); }

Json rename(Session& session, const Json& params) {
    const std::string newName = withoutQuotes(params.at("newName").get<std::string>());
    return Renaming(session, params).to(newName);
}

} // namespace hdnt::author::server
