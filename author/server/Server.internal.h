#pragma once

#include "author/server/Frames.internal.h"
#include "author/server/Session.internal.h"
#include "author/server/methods.internal.h"

#include <deque>
#include <functional>

namespace hdnt::author::server {

/// Takes messages as they come, and works them off one by one in their order, so that a cancellation reaches a request
/// that waits.
class Server {
public:
    explicit Server(std::function<void(const Json&)> send) { session_.send = std::move(send); }

    void receive(const FrameReader::Frame& frame);
    bool hasWork() const { return !waiting_.empty(); }
    /// Whether so many messages wait that others had better wait where they come from.
    bool isFull() const { return waiting_.size() >= 1000; }
    void work();

    /// What is found beside the messages, by a process of its own: as JudgedLibraries.
    bool isJudging() const { return session_.libraries.isBusy(); }
    int descriptor() const { return session_.libraries.descriptor(); }
    int timeout() const { return session_.libraries.timeout(session_); }
    void receiveFound() { session_.libraries.receive(session_); }
    void advance(bool isHurried) { session_.libraries.advance(session_, isHurried); }

    /// The same for answers that come later: as LaterAnswers.
    bool isAnsweringLater() const { return session_.later.isBusy(); }
    int laterDescriptor() const { return session_.later.descriptor(); }
    void receiveLater() { session_.later.receive(session_); }

    bool hasEnded() const { return session_.life == Session::Life::exited; }
    /// Of the process, as the protocol wants it.
    int status() const { return session_.hasShutDown ? 0 : 1; }

private:
    struct Waiting {
        Json message;
        bool isAnswer = false; ///< to what could not be taken as a message
    };

    bool hasChangeNext() const;
    void workOff(const Waiting& next);
    void take(Json&& message);
    void refuse(const Json& id, ErrorCode code, const std::string& message);
    void cancel(const Json& params);
    void request(const Json& message, const Json& id);
    void notification(const Json& message);
    void refuseWhenNotRunning(std::string_view method) const;

    Session session_;
    std::deque<Waiting> waiting_;
};

} // namespace hdnt::author::server
