#include "author/server/LaterAnswers.internal.h"
#include "author/server/Session.internal.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

void LaterAnswers::begin(Session& session, Request request) {
    requests_.push_back(std::move(request));
    if (requests_.size() == 1) start(session);
}

void LaterAnswers::start(Session& session) {
    for (; !requests_.empty(); requests_.pop_front()) {
        const Request& request = requests_.front();
        made_ = nullptr;
        const auto work = [&](const Worker::Send& send) {
            std::string bytes;
            Json::to_cbor(request.work(), bytes);
            send(bytes);
        };
        if (worker_.start(work)) return;
        fail(session, request, "no process can be started");
    }
}

bool LaterAnswers::cancel(Session& session, const Json& id) {
    const auto found = std::ranges::find(requests_, id, &Request::id);
    if (found == requests_.end()) return false;
    const bool isFirst = found == requests_.begin();
    if (isFirst) worker_.end();
    session.answerError(id, ErrorCode::requestCancelled, "cancelled");
    requests_.erase(found);
    if (isFirst) start(session);
    return true;
}

void LaterAnswers::cancelAll(Session& session) {
    worker_.end();
    for (const Request& request : std::exchange(requests_, {}))
        session.answerError(request.id, ErrorCode::requestCancelled, "cancelled");
}

void LaterAnswers::receive(Session& session) {
    for (const std::string& message : worker_.receive()) made_ = Json::from_cbor(message);
    if (!worker_.isRunning()) finish(session);
}

void LaterAnswers::finish(Session& session) {
    const Request request = std::move(requests_.front());
    requests_.pop_front();
    if (made_.is_null()) fail(session, request, worker_.accident());
    else if (made_.contains("refusal"))
        session.answerError(request.id, ErrorCode::requestFailed, made_["refusal"].get<std::string>());
    else session.answer(request.id, std::move(made_["result"]));
    start(session);
}

void LaterAnswers::fail(const Session& session, const Request& request, const std::string& reason) {
    if (request.otherwise) session.answer(request.id, *request.otherwise);
    else session.answerError(request.id, ErrorCode::requestFailed, request.failure + ": " + reason);
}

} // namespace hdnt::author::server
