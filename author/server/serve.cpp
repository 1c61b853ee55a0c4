#include "author/server/serve.h"

#include "author/server/Server.internal.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author {

namespace server {

namespace {

/// What is to be written, as far as the other end has room for it: a client that does not read must not keep the server
/// from reading.
class Output {
public:
    explicit Output(int descriptor) : descriptor_(descriptor) {}

    void add(std::string_view text) { text_ += text; }
    bool isEmpty() const { return begin_ == text_.size(); }
    bool isClosed() const { return isClosed_; }
    pollfd awaited() const { return {descriptor_, static_cast<short>(isEmpty() ? 0 : POLLOUT), 0}; }
    /// Given what was found out of it.
    void update(const pollfd& found) { isClosed_ = isClosed_ || (found.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0; }

    void write() {
        while (!isEmpty() && !isClosed_ && hasRoom(0)) writeSome();
        if (!isEmpty() && begin_ < text_.size() / 2) return;
        text_.erase(0, begin_);
        begin_ = 0;
    }

    /// Until all is written, or nobody reads for so many milliseconds.
    void drain(int patience) {
        while (!isEmpty() && !isClosed_ && hasRoom(patience)) writeSome();
    }

private:
    bool hasRoom(int timeout) const {
        pollfd waiting = awaited();
        int count = 0;
        while ((count = ::poll(&waiting, 1, timeout)) < 0 && errno == EINTR) {
        }
        return count > 0;
    }

    // As much as a pipe with room takes without waiting, also when the descriptor would wait.
    void writeSome() {
        const std::size_t size = std::min<std::size_t>(text_.size() - begin_, PIPE_BUF);
        const ssize_t count = ::write(descriptor_, text_.data() + begin_, size);
        if (count > 0) begin_ += static_cast<std::size_t>(count);
        else isClosed_ = count == 0 || (errno != EINTR && errno != EAGAIN);
    }

    int descriptor_;
    std::string text_;
    std::size_t begin_ = 0; ///< of what is not written yet
    bool isClosed_ = false; ///< nobody will read it
};

/// The loop around a server: its descriptors, and what they deliver.
class Connection {
public:
    Connection(int input, int output)
        : input_(input), output_(output), server_([this](const Json& message) { send(message); }) {}

    int run() {
        while (!isDone()) {
            await();
            if (server_.hasWork()) server_.work();
            server_.advance(hasEnded_ && !server_.hasWork());
            output_.write();
        }
        constexpr int patience = 10000;
        output_.drain(patience);
        return server_.status();
    }

private:
    static constexpr std::size_t readAtOnce = std::size_t{1} << 18;

    // Without an "exit", the end of the input lets all come to its end that was begun.
    bool isDone() const {
        if (server_.hasEnded() || output_.isClosed()) return true;
        const bool isBusy = server_.hasWork() || server_.isJudging() || server_.isAnsweringLater();
        return hasEnded_ && !isBusy && output_.isEmpty();
    }

    // Descriptors of -1 are passed over.
    void await() {
        pollfd waiting[] = {{hasEnded_ || server_.isFull() ? -1 : input_, POLLIN, 0},
                            {server_.descriptor(), POLLIN, 0},
                            {server_.laterDescriptor(), POLLIN, 0},
                            output_.awaited()};
        auto& [input, worker, later, output] = waiting;
        const bool isHurried = hasEnded_ && server_.isJudging() && server_.descriptor() < 0;
        if (::poll(waiting, std::size(waiting), server_.hasWork() || isHurried ? 0 : server_.timeout()) <= 0) return;
        output_.update(output);
        if (input.revents != 0) read();
        if (worker.revents != 0) server_.receiveFound();
        if (later.revents != 0) server_.receiveLater();
    }

    void read() {
        const ssize_t count = ::read(input_, bytes_.data(), bytes_.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
        if (count <= 0) {
            hasEnded_ = true;
            return;
        }
        reader_.feed({bytes_.data(), static_cast<std::size_t>(count)});
        while (const auto frame = reader_.next()) server_.receive(*frame);
    }

    // Texts may be cut within a character; what is no UTF-8 is replaced.
    void send(const Json& message) {
        output_.add(framed(message.dump(-1, ' ', false, Json::error_handler_t::replace)));
    }

    int input_;
    Output output_;
    FrameReader reader_;
    Server server_;
    std::vector<char> bytes_ = std::vector<char>(readAtOnce);
    bool hasEnded_ = false; ///< the input
};

} // namespace

} // namespace server

int serve(int input, int output) { return server::Connection(input, output).run(); }

} // namespace hdnt::author
