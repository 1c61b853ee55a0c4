#pragma once

#include "tests/author/Dialogue.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// A client that writes when it has read an answer, with a server in a process of its own.
class Editor : public Dialogue {
public:
    using Wanted = std::function<bool(const Json& message)>;

    Editor() {
        std::signal(SIGPIPE, SIG_IGN);
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        require(::pipe(in.data()) == 0 && ::pipe(out.data()) == 0, "no pipe");
        std::fflush(nullptr); // what waits to be written is this process's alone
        server_ = ::fork();
        require(server_ >= 0, "no process");
        if (server_ == 0) {
            ::close(in[1]);
            ::close(out[0]);
            const int status = hdnt::author::serve(in[0], out[1]);
            const bool isAlone = ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
            std::exit(isAlone ? status : leftChildren);
        }
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    ~Editor() override {
        if (server_ > 0) end();
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    Editor& raw(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(input_, bytes.data(), bytes.size());
            require(count > 0, "nobody reads");
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return *this;
    }
    void answer(const Json& request, const Json& result = nullptr) {
        raw(framed(Json{{"jsonrpc", "2.0"}, {"id", request.at("id")}, {"result", result}}.dump()));
    }

    /// The next message of that kind; null when none comes in time.
    Json await(const Wanted& wanted, int milliseconds = 20000) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            for (Json message = next(); !message.is_null(); message = next()) {
                messages.push_back(message);
                if (message.value("method", "") == "textDocument/publishDiagnostics")
                    said_[message["params"]["uri"]] = message["params"]["diagnostics"];
                if (wanted(message)) return message;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd waiting = {output_, POLLIN, 0};
            if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) <= 0 || !read())
                return nullptr;
        }
    }
    Json await(const std::string& method, int milliseconds = 20000) {
        return await([&](const Json& message) { return message.value("method", "") == method; }, milliseconds);
    }
    /// Until that, and nothing else, is said of the file: "line:code ...".
    bool awaitSaid(const std::string& uri, const std::string& codes) {
        const auto isIt = [&](const Json&) { return said(uri) == codes; };
        return isIt(nullptr) || !await(isIt).is_null();
    }
    std::string said(const std::string& uri) const;

    /// Process ids, also of those that ended and were not waited for.
    std::vector<pid_t> workers() const {
        const std::string id = std::to_string(server_);
        std::ifstream list("/proc/" + id + "/task/" + id + "/children");
        std::vector<pid_t> all;
        for (pid_t process = 0; list >> process;) all.push_back(process);
        return all;
    }
    /// One that is not that one; -1 when none comes.
    pid_t awaitWorker(pid_t before = -1) const {
        for (int i = 0; i < 1000; ++i) {
            const std::vector<pid_t> all = workers();
            if (all.size() == 1 && all[0] != before) return all[0];
            ::usleep(10000);
        }
        return -1;
    }

    static constexpr int leftChildren = 99;
    /// The status, after an "exit" or the end of the input.
    int end() {
        ::close(input_);
        constexpr int patience = 100000;
        await([](const Json&) { return false; }, patience);
        ::close(output_);
        int status = 0;
        ::waitpid(server_, &status, 0);
        server_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::vector<Json> messages;

private:
    // Null when it is not whole.
    Json next() {
        const std::size_t behind = bytes_.find("\r\n\r\n");
        if (behind == bytes_.npos) return nullptr;
        const std::size_t length = std::stoul(bytes_.substr(std::string_view("Content-Length: ").size()));
        if (bytes_.size() < behind + 4 + length) return nullptr;
        Json message = Json::parse(bytes_.substr(behind + 4, length));
        bytes_.erase(0, behind + 4 + length);
        return message;
    }

    bool read() {
        std::array<char, 65536> buffer{};
        const ssize_t count = ::read(output_, buffer.data(), buffer.size());
        if (count > 0) bytes_.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    pid_t server_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string bytes_;
    std::map<std::string, Json> said_;
};

/// "line:code ..." of a list of diagnostics, lines from 1.
inline std::string brieflyOf(const Json& diagnostics) {
    std::string all;
    for (const Json& one : diagnostics)
        all += (all.empty() ? "" : " ") + std::to_string(one["range"]["start"]["line"].get<int>() + 1) + ':' +
               one.value("code", "?");
    return all;
}

inline std::string Editor::said(const std::string& uri) const {
    const auto found = said_.find(uri);
    return found == said_.end() ? "" : brieflyOf(found->second);
}

} // namespace support
