#pragma once

#include "author/server/serve.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace support {

using Json = nlohmann::json;

inline std::string framed(std::string_view body) {
    return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

/// What a client writes, all at once, and what a server in this process answers.
class Dialogue {
public:
    Dialogue() = default;
    Dialogue(const Dialogue&) = default;
    virtual ~Dialogue() = default;

    virtual Dialogue& raw(std::string_view bytes) {
        input_ += bytes;
        return *this;
    }
    Dialogue& notify(const std::string& method, const Json& params = Json::object()) {
        return raw(framed(Json{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}}.dump()));
    }
    /// With the numbers from 1 on as id.
    Dialogue& request(const std::string& method, const Json& params = Json::object()) {
        return raw(framed(Json{{"jsonrpc", "2.0"}, {"id", ++id_}, {"method", method}, {"params", params}}.dump()));
    }
    Dialogue& initialize(const Json& capabilities = Json::object(), Json params = Json::object()) {
        params["capabilities"] = capabilities;
        return request("initialize", params).notify("initialized");
    }
    Dialogue& open(const std::string& uri, const std::string& text) {
        return notify("textDocument/didOpen",
                      {{"textDocument", {{"uri", uri}, {"languageId", "ntl"}, {"version", 1}, {"text", text}}}});
    }
    Dialogue& change(const std::string& uri, const Json& changes, int version = 2) {
        return notify("textDocument/didChange",
                      {{"textDocument", {{"uri", uri}, {"version", version}}}, {"contentChanges", changes}});
    }
    Dialogue& ask(const std::string& what, const std::string& uri, Json params = Json::object()) {
        params["textDocument"] = {{"uri", uri}};
        return request("textDocument/" + what, params);
    }

    std::vector<Json> run() {
        const File in(std::tmpfile(), &std::fclose);
        const File out(std::tmpfile(), &std::fclose);
        require(in && out, "no temporary file");
        require(std::fwrite(input_.data(), 1, input_.size(), in.get()) == input_.size(), "no room for the input");
        std::rewind(in.get());
        status_ = hdnt::author::serve(fileno(in.get()), fileno(out.get()));
        return messagesOf(out.get());
    }
    int status() const { return status_; }
    /// So far.
    std::size_t requests() const { return static_cast<std::size_t>(id_); }

protected:
    static void require(bool ok, const char* what) {
        if (!ok) throw std::runtime_error(what);
    }

private:
    using File = std::unique_ptr<FILE, int (*)(FILE*)>;

    static std::vector<Json> messagesOf(FILE* file) {
        std::vector<Json> messages;
        std::rewind(file);
        unsigned long length = 0;
        while (std::fscanf(file, "Content-Length: %lu", &length) == 1) {
            std::string body(length + 4, ' ');
            require(std::fread(body.data(), 1, body.size(), file) == body.size(), "a message is cut");
            require(body.starts_with("\r\n\r\n"), "a message without a blank line");
            messages.push_back(Json::parse(body.substr(4)));
        }
        require(std::feof(file), "something between messages");
        return messages;
    }

    std::string input_;
    int id_ = 0;
    int status_ = -1;
};

inline Json rangeOf(int line, int character, int endLine, int endCharacter) {
    return {{"start", {{"line", line}, {"character", character}}},
            {"end", {{"line", endLine}, {"character", endCharacter}}}};
}

/// A line for each message: "ID result", "ID CODE", or the method.
inline std::string briefly(const std::vector<Json>& messages) {
    std::string all;
    for (const Json& message : messages) {
        if (!all.empty()) all += ", ";
        if (message.contains("method")) all += message["method"].get<std::string>();
        else if (message.contains("error")) all += message["id"].dump() + " " + message["error"]["code"].dump();
        else all += message["id"].dump() + " result";
    }
    return all;
}

} // namespace support
