// Blocks and functions of all libraries that a document is open of.
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

constexpr int noMatch = 3;

/// How well a name fits what was typed: 0 begins with it, 1 has it, 2 has its characters in their order.
int rankOf(std::string_view name, const std::string& query) {
    const std::string upper = HSTStringUtils::to_upper_copy(name);
    const std::size_t found = upper.find(query);
    if (found != upper.npos) return found == 0 ? 0 : 1;
    std::size_t matched = 0;
    for (const char c : upper)
        if (matched < query.size() && query[matched] == c) ++matched;
    return matched == query.size() ? 2 : noMatch;
}

class Finder {
public:
    Finder(const std::string& query, Encoding encoding)
        : query_(HSTStringUtils::to_upper_copy(query)), locations_(encoding) {}

    void search(const Libraries& libraries) {
        for (const Text& text : libraries.texts()) {
            if (!done_.insert(text.uri).second) continue;
            forEachElement(text, [&](const Place& place) { add(place); });
        }
    }
    Json best() {
        std::ranges::stable_sort(found_, {}, [](const auto& one) { return one.first; });
        found_.resize(std::min(found_.size(), most));
        Json all = Json::array();
        for (auto& [rank, symbol] : found_) all.push_back(std::move(symbol));
        return all;
    }

private:
    static constexpr std::size_t most = 1000;

    void add(const Place& place) {
        constexpr int cell = 5, function = 12;
        const NtlPart part = place.get().part;
        if (part == NtlPart::mapping || nameOf(place).empty()) return;
        const int rank = rankOf(nameOf(place), query_);
        if (rank == noMatch || ++ranked_[rank] > most) return;
        Json symbol = {{"name", nameOf(place)}, {"kind", part == NtlPart::function ? function : cell}};
        symbol["location"] = locations_.locationIn(*place.text, insideOf(place.text->items(), nameItemOf(place)));
        if (const std::string_view library = nameOf({place.text, 0}); !library.empty())
            symbol["containerName"] = library;
        found_.emplace_back(rank, std::move(symbol));
    }

    std::string query_;
    Locations locations_;
    std::set<std::string> done_;
    std::size_t ranked_[noMatch] = {};
    std::vector<std::pair<int, Json>> found_;
};

} // namespace

Json workspaceSymbols(Session& session, const Json& params) {
    Finder finder(params.at("query").get<std::string>(), session.encoding);
    std::vector<std::string> uris;
    for (const auto& [uri, document] : session.documents) uris.push_back(uri);
    std::ranges::sort(uris);
    for (const std::string& uri : uris) finder.search(Libraries(session, uri));
    return finder.best();
}

} // namespace hdnt::author::server
