#include "author/server/Expansions.internal.h"
#include "author/server/FolderLoader.internal.h"
#include "author/server/Session.internal.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

namespace {

// A document that is no file is a library by itself.
LibraryTask taskOf(const Session& session, const Expansions::Request& request) {
    if (const std::string path = pathOf(request.uri); !path.empty()) return server::taskOf(session, path);
    LibraryTask task;
    task.library.path = "/";
    task.document = "/untitled.btl";
    task.texts.emplace(task.document, session.documents.at(request.uri).text());
    return task;
}

} // namespace

void Expansions::begin(Session& session, Request request) {
    requests_.push_back(std::move(request));
    if (requests_.size() == 1) start(session);
}

void Expansions::start(Session& session) {
    for (; !requests_.empty(); requests_.pop_front()) {
        const Request& request = requests_.front();
        result_ = nullptr;
        const auto work = [&](const Worker::Send& send) {
            std::string bytes;
            Json::to_cbor(expandBlock(taskOf(session, request), request.block, request.isOwn), bytes);
            send(bytes);
        };
        const bool isOpen = session.documents.contains(request.uri);
        if (isOpen && worker_.start(work)) return;
        session.answerError(request.id, ErrorCode::requestFailed,
                            isOpen ? "no process can be started" : request.uri + " is not open");
    }
}

bool Expansions::cancel(Session& session, const Json& id) {
    const auto found = std::ranges::find(requests_, id, &Request::id);
    if (found == requests_.end()) return false;
    const bool isFirst = found == requests_.begin();
    if (isFirst) worker_.end();
    session.answerError(id, ErrorCode::requestCancelled, "cancelled");
    requests_.erase(found);
    if (isFirst) start(session);
    return true;
}

void Expansions::cancelAll(Session& session) {
    worker_.end();
    for (const Request& request : std::exchange(requests_, {}))
        session.answerError(request.id, ErrorCode::requestCancelled, "cancelled");
}

void Expansions::receive(Session& session) {
    for (const std::string& message : worker_.receive()) result_ = Json::from_cbor(message);
    if (!worker_.isRunning()) finish(session);
}

void Expansions::finish(Session& session) {
    const Request request = std::move(requests_.front());
    requests_.pop_front();
    const auto refuse = [&](const std::string& reason) {
        session.answerError(request.id, ErrorCode::requestFailed, reason);
    };
    if (result_.is_null()) refuse("block '" + request.block + "' is not expanded: " + worker_.accident());
    else if (result_.contains("refusal")) refuse(result_["refusal"]);
    else session.answer(request.id, {{"uri", request.uri}, {"block", request.block}, {"text", result_.at("text")}});
    start(session);
}

} // namespace hdnt::author::server
