#pragma once

#include "tests/author/Dialogue.h"
#include "tests/author/Typist.h"
#include "tests/platform/TempDir.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// Files in a folder of their own, some of them open in an editor, and a question at the place that a "^" marks.
class Desk {
public:
    Desk& file(const std::string& name, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        folder_->write(name, take(name, text));
        return *this;
    }
    /// Without a file of it, or before it.
    Desk& open(const std::string& name, const std::string& text) {
        opened_.emplace_back(name, take(name, text));
        return *this;
    }
    /// As the client says what it can; to be said before it opens anything.
    Desk& client(Json capabilities) {
        capabilities_ = std::move(capabilities);
        return *this;
    }

    /// Its folder is one of the workspace, as clients say that.
    Desk& inWorkspace() { return startedWith({{"workspaceFolders", {asFolder()}}}); }
    Json asFolder() const { return {{"uri", uri("")}, {"name", "desk"}}; }
    Desk& startedWith(Json params) {
        started_ = std::move(params);
        return *this;
    }
    /// Said before anything is opened.
    Desk& notified(const std::string& method, Json params) {
        notified_.emplace_back(method, std::move(params));
        return *this;
    }

    const std::string& text(const std::string& name) const { return texts_.at(name); }
    std::string path(const std::string& name) const { return folder_->path(name); }
    std::string uri(const std::string& name) const { return "file://" + path(name); }

    /// All that the server says behind the question; the answer is the last.
    std::vector<Json> conversation(const std::string& method, Json params = Json::object()) {
        Dialogue dialogue;
        dialogue.initialize(capabilities_, started_);
        for (const auto& [told, what] : notified_) dialogue.notify(told, what);
        for (const auto& [name, text] : opened_) dialogue.open(uri(name), text);
        params["textDocument"] = {{"uri", uri(marked_)}};
        params["position"] = positionIn(markedText_, offset_, false);
        auto messages = dialogue.request(method, params).run();
        std::erase_if(messages, [](const Json& message) {
            return message.contains("id") ? message["id"] == 1 : message["method"] == "textDocument/publishDiagnostics";
        });
        return messages;
    }
    Json ask(const std::string& method, const Json& params = Json::object()) {
        return conversation(method, params).back();
    }
    Json result(const std::string& method, const Json& params = Json::object()) {
        return ask(method, params).at("result");
    }

    /// "name:line:text", with what stands there in its line.
    std::string brief(const Json& location) const {
        const bool isLink = location.contains("targetUri");
        const Json& range = location.at(isLink ? "targetSelectionRange" : "range");
        const std::string uri = location.at(isLink ? "targetUri" : "uri");
        const std::string name = uri.substr(std::min(uri.size(), this->uri("").size() + 1));
        const std::string& text = texts_.at(name);
        const std::size_t begin = offsetIn(text, range["start"]);
        return name + ':' + range["start"]["line"].dump() + ':' +
               text.substr(begin, offsetIn(text, range["end"]) - begin);
    }
    /// In their order of files and places.
    std::string briefs(const Json& locations) const {
        std::vector<std::string> all;
        for (const Json& location : locations) all.push_back(brief(location));
        std::string text;
        for (const std::string& one : all) text += (text.empty() ? "" : " ") + one;
        return text;
    }

    static std::size_t offsetIn(const std::string& text, const Json& position) {
        std::size_t offset = 0;
        while (offset < text.size() && positionIn(text, offset, false) != position) ++offset;
        return offset;
    }

private:
    std::string take(const std::string& name, std::string text) {
        const std::size_t mark = text.find('^');
        if (mark != text.npos) text.erase(mark, 1);
        texts_[name] = text;
        if (mark == text.npos) return text;
        marked_ = name;
        offset_ = mark;
        markedText_ = text;
        return text;
    }

    std::unique_ptr<TempDir> folder_ = std::make_unique<TempDir>();
    Json capabilities_ = Json::object();
    Json started_ = Json::object();
    std::vector<std::pair<std::string, Json>> notified_;
    std::vector<std::pair<std::string, std::string>> opened_;
    std::map<std::string, std::string> texts_;
    std::string marked_;
    std::string markedText_;
    std::size_t offset_ = 0;
};

} // namespace support
