#pragma once

#include "author/server/Found.internal.h"
#include "author/server/Worker.internal.h"

#include <deque>
#include <string>

namespace hdnt::author::server {

struct Session;
struct LibraryTask;

/// What the mappings of blocks become, for requests that are answered when that is known: one after the other, each in
/// a worker, from the texts as they are when it begins.
class Expansions {
public:
    struct Request {
        Json id;
        std::string uri; ///< of a text of the library
        std::string block;
        bool isOwn = false; ///< the library declares it itself
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

    std::deque<Request> requests_; ///< the first is under way
    Worker worker_;
    Json result_; ///< what the worker sent; null: nothing yet
};

// expandFolder.cpp
/// What the mapping of a block becomes: {"text": ...}, or {"refusal": ...} with the reason why there is none. For a
/// process of its own, which it changes for good.
Json expandBlock(LibraryTask task, const std::string& block, bool isOwn);

} // namespace hdnt::author::server
