// Any bytes end a server in good order; after any changes a document is as one that was opened with its text, and every
// request about it has one answer.
#include "tests/author/Dialogue.h"
#include "tests/author/Typist.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

using support::Dialogue;
using support::Json;

static void require(bool ok, const char* what, const std::string& text) {
    if (ok) return;
    std::fprintf(stderr, "%s\n%s\n", what, text.c_str());
    std::abort();
}

static void takeAsMessages(const std::string& bytes) {
    const auto messages = Dialogue().initialize().raw(bytes).run();
    const auto isFirst = [](const Json& message) { return message.contains("id") && message["id"] == 1; };
    require(std::any_of(messages.begin(), messages.end(), isFirst), "a request without an answer", bytes);
}

namespace {

/// Numbers from bytes, two for each; zeros behind them.
class Numbers {
public:
    explicit Numbers(const std::string& bytes) : bytes_(bytes) {}
    bool isLeft() const { return at_ < bytes_.size(); }
    std::size_t operator()() {
        const std::size_t low = at_ < bytes_.size() ? static_cast<unsigned char>(bytes_[at_]) : 0;
        const std::size_t high = at_ + 1 < bytes_.size() ? static_cast<unsigned char>(bytes_[at_ + 1]) : 0;
        at_ += 2;
        return low + 256 * high;
    }

private:
    const std::string& bytes_;
    std::size_t at_ = 0;
};

const char* const methods[] = {
    "textDocument/codeAction",
    "textDocument/codeLens",
    "textDocument/completion",
    "textDocument/declaration",
    "textDocument/definition",
    "textDocument/documentHighlight",
    "textDocument/documentLink",
    "textDocument/documentSymbol",
    "textDocument/foldingRange",
    "textDocument/formatting",
    "textDocument/hover",
    "textDocument/inlayHint",
    "textDocument/onTypeFormatting",
    "textDocument/prepareCallHierarchy",
    "textDocument/prepareRename",
    "textDocument/rangeFormatting",
    "textDocument/references",
    "textDocument/rename",
    "textDocument/selectionRange",
    "textDocument/semanticTokens/full",
    "textDocument/semanticTokens/range",
    "textDocument/signatureHelp",
    "workspace/symbol",
};

/// What any of these asks with.
Json paramsAt(const std::string& text, const std::string& uri, Numbers& number) {
    const std::size_t offset = number() % (text.size() + 2);
    const Json begin = support::positionIn(text, std::min(offset, text.size()), false);
    const Json end = support::positionIn(text, std::min(offset + number() % 200, text.size()), false);
    const Json options = {{"tabSize", 2}, {"insertSpaces", true}};
    return {{"textDocument", {{"uri", uri}}},
            {"position", begin},
            {"positions", {begin, end}},
            {"range", {{"start", begin}, {"end", end}}},
            {"context", {{"includeDeclaration", true}, {"diagnostics", Json::array()}, {"triggerKind", 1}}},
            {"newName", "N"},
            {"ch", ";"},
            {"options", options},
            {"query", offset % 2 == 0 ? "n" : ""}};
}

/// Asks on about what was answered.
void askOn(Dialogue& dialogue, const Json& result, bool expands) {
    for (const Json& one : result.is_array() ? result : result.value("items", Json::array())) {
        if (!one.is_object()) continue;
        if (one.contains("sortText")) dialogue.request("completionItem/resolve", one);
        if (one.contains("data") && one.contains("selectionRange"))
            for (const char* const method : {"callHierarchy/incomingCalls", "callHierarchy/outgoingCalls"})
                dialogue.request(method, {{"item", one}});
        if (expands && one.contains("command")) dialogue.request("workspace/executeCommand", one["command"]);
    }
}

std::vector<Json> answered(Dialogue& dialogue, const std::string& text) {
    std::vector<Json> results;
    std::set<Json> ids;
    for (const Json& message : dialogue.run()) {
        if (message.contains("method")) continue;
        require(ids.insert(message["id"]).second, "two answers to a request", text);
        require(message.value("/error/code"_json_pointer, 0) != -32603, "a fault inside", text);
        results.push_back(message.value("result", Json()));
    }
    require(ids.size() == dialogue.requests(), "a request without an answer", text);
    return results;
}

} // namespace

static void takeAsChanges(const std::string& bytes) {
    Numbers number(bytes);
    support::Typist typist(std::ref(number), false);
    Dialogue dialogue;
    dialogue.initialize().open("changed", typist.text());
    while (number.isLeft()) dialogue.change("changed", typist.type()).open("opened", typist.text());
    const auto messages = dialogue.run();
    for (std::size_t i = 2; i + 1 < messages.size(); i += 2)
        require(messages[i]["params"]["diagnostics"] == messages[i + 1]["params"]["diagnostics"],
                "not as read from scratch", typist.text());
}

// What was asked of a text is asked on of another one. A process for each expansion takes its time.
static void takeAsRequests(const std::string& bytes) {
    constexpr std::size_t seldom = 64;
    Numbers number(bytes);
    const bool expands = number() % seldom == 1;
    support::Typist typist(std::ref(number), false);
    Dialogue first;
    first.initialize().open("untitled:a", typist.text());
    while (number.isLeft()) {
        if (number() % 2 == 0) first.change("untitled:a", typist.type());
        first.request(methods[number() % std::size(methods)], paramsAt(typist.text(), "untitled:a", number));
    }
    const std::vector<Json> results = answered(first, typist.text());
    Dialogue second;
    second.initialize().open("untitled:a", typist.text()).change("untitled:a", typist.type());
    for (const Json& result : results)
        if (result.is_structured()) askOn(second, result, expands);
    answered(second, typist.text());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    takeAsMessages(bytes);
    takeAsChanges(bytes.substr(0, 400));
    takeAsRequests(bytes.substr(0, 400));
    return 0;
}
