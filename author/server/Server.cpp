#include "author/server/Server.internal.h"

#include <algorithm>
#include <new>
#include <utility>

namespace hdnt::author::server {

namespace {

using Kind = Method::Kind;

// What nests deeper is no message of the protocol, and would take many times its length.
Json parse(const std::string& text) {
    constexpr int deepest = 1000;
    return Json::parse(text, [](int depth, Json::parse_event_t, Json&) {
        if (depth > deepest) throw RequestError(ErrorCode::parseError, "nested too deep");
        return true;
    });
}

bool isId(const Json& id) { return id.is_number_integer() || id.is_string(); }

// Empty: all is well.
std::string_view faultOf(const Json& message) {
    if (!message.is_object()) return "a message is an object";
    if (message.value("jsonrpc", Json()) != "2.0") return "jsonrpc is not \"2.0\"";
    const bool hasId = message.contains("id");
    const auto method = message.find("method");
    if (method == message.end())
        return hasId && (message.contains("result") || message.contains("error")) ? "" : "no method";
    if (!method->is_string()) return "method is no string";
    if (hasId && !isId(message["id"])) return "id is neither a whole number nor a string";
    if (const auto params = message.find("params");
        params != message.end() && !params->is_structured() && !params->is_null())
        return "params are neither an object nor an array";
    return "";
}

const Json& paramsOf(const Json& message) {
    static const Json none = Json::object();
    const auto params = message.find("params");
    return params == message.end() || params->is_null() ? none : *params;
}

/// Calls the body, and hands on what it throws.
template <typename Body, typename Failed>
void guarded(Body&& body, Failed&& failed) {
    try {
        body();
    } catch (const RequestError& error) {
        failed(error.code(), error.what());
    } catch (const Json::exception& error) {
        failed(ErrorCode::invalidParams, error.what());
    } catch (const std::bad_alloc&) {
        failed(ErrorCode::internalError, "out of memory");
    } catch (const std::exception& error) {
        failed(ErrorCode::internalError, error.what());
    }
}

} // namespace

void Server::receive(const FrameReader::Frame& frame) {
    using FrameKind = FrameReader::Frame::Kind;
    const auto failed = [&](ErrorCode code, const std::string& what) { refuse(nullptr, code, what); };
    if (frame.kind == FrameKind::tooLong) return failed(ErrorCode::invalidRequest, frame.text);
    if (frame.kind == FrameKind::brokenHeader) return failed(ErrorCode::parseError, frame.text);
    const auto failedToParse = [&](ErrorCode code, const std::string& what) {
        failed(code == ErrorCode::invalidParams ? ErrorCode::parseError : code, what);
    };
    guarded([&] { take(parse(frame.text)); }, failedToParse);
}

void Server::take(Json&& message) {
    if (const std::string_view fault = faultOf(message); !fault.empty()) {
        const Json id = message.is_object() ? message.value("id", Json()) : Json();
        return refuse(isId(id) ? id : Json(), ErrorCode::invalidRequest, std::string(fault));
    }
    if (!message.contains("method")) return session_.takeAnswer(message);
    if (message["method"] == "$/cancelRequest") return cancel(paramsOf(message));
    waiting_.push_back({std::move(message)});
}

// In its turn, as any answer.
void Server::refuse(const Json& id, ErrorCode code, const std::string& message) {
    waiting_.push_back({errorAnswer(id, code, message), true});
}

void Server::cancel(const Json& params) {
    const Json id = params.is_object() ? params.value("id", Json()) : Json();
    const auto found = std::find_if(waiting_.begin(), waiting_.end(), [&](const Waiting& each) {
        return !each.isAnswer && each.message.contains("id") && each.message["id"] == id;
    });
    if (found == waiting_.end()) {
        session_.later.cancel(session_, id);
        return;
    }
    waiting_.erase(found);
    session_.answerError(id, ErrorCode::requestCancelled, "cancelled");
}

// Of changes that wait together, the last one counts for what is said of a document.
bool Server::hasChangeNext() const {
    return hasWork() && !waiting_.front().isAnswer &&
           waiting_.front().message.value("method", Json()) == "textDocument/didChange";
}

void Server::work() {
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    workOff(next);
    if (!hasChangeNext()) publishChanged(session_);
}

void Server::workOff(const Waiting& next) {
    const auto& [message, isAnswer] = next;
    if (isAnswer) return session_.send(message);
    const auto id = message.find("id");
    if (id == message.end()) notification(message);
    else request(message, *id);
}

void Server::refuseWhenNotRunning(std::string_view method) const {
    if (session_.life == Session::Life::fresh && method != "initialize")
        throw RequestError(ErrorCode::notInitialized, "initialize comes first");
    if (session_.life == Session::Life::shutDown) throw RequestError(ErrorCode::invalidRequest, "after shutdown");
}

void Server::request(const Json& message, const Json& id) {
    const auto& name = message["method"].get_ref<const std::string&>();
    const auto handle = [&] {
        refuseWhenNotRunning(name);
        const Method* const method = findMethod(name);
        if (!method || method->kind != Kind::request)
            throw RequestError(ErrorCode::methodNotFound, "no request " + name);
        session_.request = id;
        session_.files.newRequest();
        Json result = method->handle(session_, paramsOf(message));
        if (session_.request) session_.answer(id, std::move(result));
    };
    guarded(handle, [&](ErrorCode code, const std::string& what) { session_.answerError(id, code, what); });
}

// Those that come too early or too late are dropped, but for the one that ends all.
void Server::notification(const Json& message) {
    const auto& name = message["method"].get_ref<const std::string&>();
    const Method* const method = findMethod(name);
    if (!method || method->kind != Kind::notification) return;
    if (session_.life != Session::Life::initialized && name != "exit") return;
    guarded([&] { method->handle(session_, paramsOf(message)); },
            [&](ErrorCode, const std::string& what) { log(session_, name + ": " + what); });
}

} // namespace hdnt::author::server
