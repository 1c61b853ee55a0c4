// What values fit in a place: of properties, groups and names of files.
#include "author/server/Workspace.internal.h"
#include "author/server/completion.internal.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <system_error>

namespace hdnt::author::server {

using Kind = Proposal::Kind;

std::string typeOf(const Place& property) {
    const std::uint32_t item = typeItemOf(property);
    return item == property.get().end ? std::string() : std::string(property.text->textOf(item));
}

static bool startsWith(const Place& place, int token) {
    return place.get().begin < place.get().end && place.text->items()[place.get().begin].kind == token;
}

PropertyValue ConstantRole::value() {
    if (item_ >= text_.items().size()) return {};
    NodeChain chain(text_);
    const std::vector<std::uint32_t> nodes = chain.around(item_);
    if (nodes.size() < 2) return {};
    const Place innermost{&text_, nodes.back()};
    const Place around{&text_, nodes[nodes.size() - 2]};
    switch (innermost.get().part) {
    case NtlPart::option:
        if (startsWith(innermost, T_Default) && around.get().part == NtlPart::property) return {around};
        return {};
    case NtlPart::constant: break;
    default: return {};
    }
    const NtlPart part = around.get().part;
    if (part == NtlPart::operation) return compared();
    if (part != NtlPart::assignBlockProperty && part != NtlPart::assignPinProperty) return {};
    const std::vector<std::uint32_t> strings = wordsOf(around);
    return strings.empty() ? PropertyValue() : PropertyValue{propertyAt(strings.back())};
}

// Of "intProperty("N") == " and its like.
PropertyValue ConstantRole::compared() {
    const frontend::SourceItems& items = text_.items();
    std::vector<std::uint32_t> before; // the last tokens, from the place on
    for (std::uint32_t item = item_; item > 0 && before.size() < 5; --item)
        if (items[item - 1].isToken()) before.push_back(item - 1);
    if (before.size() < 5) return {};
    const int comparison = items[before[0]].kind;
    if (comparison != T_EqualTo && comparison != T_NotEqual) return {};
    if (items[before[1]].kind != ')' || items[before[2]].kind != T_StringConstant || items[before[3]].kind != '(')
        return {};
    return {propertyAt(before[2]), text_.textOf(before[4]) == "stringProperty"};
}

Place ConstantRole::propertyAt(std::uint32_t item) {
    const std::optional<Name> property = reader_.at(item);
    if (!property || property->key.kind != Name::Kind::property) return {};
    const std::vector<Place> declared = declarationsOf(libraries_, *property, reader_.mapping());
    return declared.empty() ? Place() : declared.front();
}

void proposeValues(const PropertyValue& value, Proposals& to) {
    const Place& property = value.property;
    const std::uint32_t typeItem = typeItemOf(property);
    const int type = typeItem == property.get().end ? 0 : property.text->items()[typeItem].kind;
    if (type == T_Bool)
        for (const char* const word : {"true", "false"}) to.add({word, Kind::value, "", value.isText, 0});
    const frontend::PropertyForm* const form = frontend::formOf(type);
    forEachChild(property.text->tree(), property.node, [&](std::uint32_t child) {
        const Place option{property.text, child};
        if (!form || option.get().part != NtlPart::option || !startsWith(option, T_Values)) return;
        for (std::uint32_t item = option.get().begin; item < option.get().end; ++item) {
            if (property.text->items()[item].kind != form->value) continue;
            const bool isQuoted = value.isText || form->value == T_StringConstant;
            to.add({std::string(contentOf(*property.text, item)), Kind::value, "", isQuoted, 0});
        }
    });
}

// As the blocks of all libraries have them.
void ConstantRole::proposeGroups(Proposals& to) {
    NodeChain chain(text_);
    const std::vector<std::uint32_t>& nodes = chain.around(item_);
    if (nodes.empty() || !startsWith({&text_, nodes.back()}, T_PrimGroup)) return;
    for (const Text& text : libraries_.texts())
        forEachElement(text, [&](const Place& block) {
            forEachChild(text.tree(), block.node, [&](std::uint32_t child) {
                const Place flag{&text, child};
                if (flag.get().part == NtlPart::flag && startsWith(flag, T_PrimGroup))
                    to.add({std::string(stringOf(flag, 0)), Kind::value, "", true, 0});
            });
        });
}

void proposeFiles(const Libraries& libraries, std::string_view typed, Proposals& to) {
    namespace fs = std::filesystem;
    const std::string folder(typed.substr(0, typed.rfind('/') + 1));
    for (const std::string& directory : libraries.searchDirectories()) {
        std::error_code error;
        const fs::path from = folder.starts_with('/') ? fs::path(folder) : fs::path(directory) / folder;
        for (fs::directory_iterator entry(from, error), end; !error && entry != end; entry.increment(error)) {
            const std::string name = entry->path().filename().string();
            const bool isFolder = entry->is_directory(error);
            if (!name.starts_with('.') && name.find_first_of(" \t;") == name.npos)
                to.add({folder + name + (isFolder ? "/" : ""), Kind::file, "", false, isFolder ? 1U : 0U});
        }
    }
}

} // namespace hdnt::author::server
