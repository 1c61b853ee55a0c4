#include "author/server/serve.h"

#include "author/server/Server.internal.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <string>
#include <vector>

namespace hdnt::author {

namespace server {

namespace {

/// The loop around a server: its descriptors, and what they deliver.
class Connection {
public:
    Connection(int input, int output)
        : input_(input), output_(output), server_([this](const Json& message) { send(message); }) {}

    int run() {
        while (!server_.hasEnded() && !isClosed_ && (server_.hasWork() || !hasEnded_)) {
            if (!hasEnded_ && isReadable(server_.hasWork() ? 0 : forever)) read();
            if (server_.hasWork()) server_.work();
        }
        return server_.status();
    }

private:
    static constexpr int forever = -1;
    static constexpr std::size_t readAtOnce = std::size_t{1} << 18;

    // More descriptors to wait for join the list.
    bool isReadable(int timeout) const {
        pollfd descriptors[] = {{input_, POLLIN, 0}};
        return ::poll(descriptors, std::size(descriptors), timeout) > 0;
    }

    void awaitRoom() const {
        pollfd descriptor = {output_, POLLOUT, 0};
        ::poll(&descriptor, 1, forever);
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
        const std::string text = framed(message.dump(-1, ' ', false, Json::error_handler_t::replace));
        for (std::size_t done = 0; done < text.size() && !isClosed_;) {
            const ssize_t count = ::write(output_, text.data() + done, text.size() - done);
            if (count > 0) done += static_cast<std::size_t>(count);
            else if (count < 0 && errno == EAGAIN) awaitRoom(); // others may share the pipe, and not want to wait
            else isClosed_ = count == 0 || errno != EINTR;
        }
    }

    int input_;
    int output_;
    FrameReader reader_;
    Server server_;
    std::vector<char> bytes_ = std::vector<char>(readAtOnce);
    bool hasEnded_ = false; ///< the input
    bool isClosed_ = false; ///< the output
};

} // namespace

} // namespace server

int serve(int input, int output) { return server::Connection(input, output).run(); }

} // namespace hdnt::author
