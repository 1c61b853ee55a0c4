#pragma once

#include "author/server/Found.internal.h"
#include "author/server/Worker.internal.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>

namespace hdnt::author::server {

struct Session;

/// Answers that take a model: made one after the other, each in a worker, from what the session knows when it begins.
/// Others are answered meanwhile.
class LaterAnswers {
public:
    struct Request {
        Json id;
        /// In the worker, which it changes for good. What it gives has a "result", or a "refusal" with the reason.
        std::function<Json()> work;
        std::string failure;                ///< what to say before the reason when the worker came to nothing
        std::optional<Json> otherwise = {}; ///< the result instead of that
    };
    void begin(Session& session, Request request);
    /// Answers a request that it was cancelled. False: it is not one of these.
    bool cancel(Session& session, const Json& id);
    void cancelAll(Session& session);

    bool isBusy() const { return worker_.isRunning(); }
    /// Readable when receive() has something to do; -1 when there is nothing to wait for.
    int descriptor() const { return worker_.descriptor(); }
    void receive(Session& session);

private:
    void start(Session& session);
    void finish(Session& session);
    static void fail(const Session& session, const Request& request, const std::string& reason);

    std::deque<Request> requests_; ///< the first is under way
    Worker worker_;
    Json made_; ///< what the worker sent; null: nothing yet
};

} // namespace hdnt::author::server
