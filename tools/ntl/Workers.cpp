#include "tools/ntl/Workers.h"

#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Output.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>
#include <vector>

namespace ntl {

namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    bool open() {
        int ends[2];
        if (pipe(ends) != 0) return false;
        readEnd = ends[0];
        writeEnd = ends[1];
        return true;
    }
    void close() {
        for (int* end : {&readEnd, &writeEnd}) {
            if (*end != -1) ::close(*end);
            *end = -1;
        }
    }
};

struct Worker {
    size_t task;
    pid_t process;
    int textEnd;
    int resultEnd;
};

struct TaskState {
    std::string text; ///< what was said and not yet passed on
    WorkerResult result;
    bool finished = false;
};

class Pool {
public:
    explicit Pool(const WorkerTasks& tasks) : tasks_(tasks), states_(tasks.count) {}

    void run() {
        endTimeLimit(); // each worker has its own
        while (finished_ < tasks_.count) {
            while (nextTask_ < tasks_.count && workers_.size() < static_cast<size_t>(tasks_.atOnce) && start()) {
            }
            receive();
            tasks_.tick(finished_);
            passOn();
        }
    }

private:
    // False when there is no room for another process just now.
    bool start() {
        Pipe text;
        Pipe result;
        const bool ready = text.open() && result.open();
        std::cout.flush();
        std::fflush(nullptr);
        const pid_t process = ready ? fork() : -1;
        if (process == 0) beWorker(text, result);
        if (process == -1) {
            const int error = errno;
            text.close();
            result.close();
            if (workers_.empty()) throw std::system_error(error, std::generic_category(), "cannot start a process");
            return false;
        }
        close(text.writeEnd);
        close(result.writeEnd);
        workers_.push_back({nextTask_++, process, text.readEnd, result.readEnd});
        return true;
    }

    [[noreturn]] void beWorker(Pipe& text, Pipe& result) {
        dup2(text.writeEnd, STDERR_FILENO);
        text.close();
        close(result.readEnd);
        beginTimeLimit();
        std::signal(SIGALRM, SIG_DFL); // the parent says it
        writeAll(result.writeEnd, tasks_.work(nextTask_));
        close(result.writeEnd);
        end();
    }

    // Without the destructors of what is static: each page that they touch would be copied from the parent. Sanitizers
    // look for leaks at a real end.
    [[noreturn]] static void end() {
        std::cout.flush();
        std::fflush(nullptr);
#ifdef HDNT_SANITIZED
        std::exit(EXIT_SUCCESS);
#else
        _exit(EXIT_SUCCESS);
#endif
    }

    // Appends what is there; false at the end of the stream.
    static bool take(int& end, std::string& out) {
        std::array<char, 65536> buffer;
        const ssize_t count = read(end, buffer.data(), buffer.size());
        if (count > 0) out.append(buffer.data(), static_cast<size_t>(count));
        if (count > 0 || (count < 0 && errno == EINTR)) return true;
        close(end);
        end = -1;
        return false;
    }

    void receive() {
        std::vector<pollfd> waiting;
        for (const Worker& worker : workers_)
            for (const int end : {worker.textEnd, worker.resultEnd}) waiting.push_back({end, POLLIN, 0});
        constexpr int milliseconds = 100;
        if (poll(waiting.data(), waiting.size(), milliseconds) <= 0) return;
        for (size_t i = 0; i < workers_.size(); ++i) {
            Worker& worker = workers_[i];
            TaskState& state = states_[worker.task];
            if (worker.textEnd != -1 && waiting[2 * i].revents != 0) take(worker.textEnd, state.text);
            if (worker.resultEnd != -1 && waiting[2 * i + 1].revents != 0) take(worker.resultEnd, state.result.bytes);
            if (worker.textEnd == -1 && worker.resultEnd == -1) finish(worker, state);
        }
        const auto isDone = [&](const Worker& worker) { return states_[worker.task].finished; };
        workers_.erase(std::remove_if(workers_.begin(), workers_.end(), isDone), workers_.end());
    }

    void finish(const Worker& worker, TaskState& state) {
        int status = 0;
        while (waitpid(worker.process, &status, 0) == -1 && errno == EINTR) {
        }
        if (WIFSIGNALED(status)) {
            const int signal = WTERMSIG(status);
            if (signal == SIGALRM) state.result.accident = "ended, since the limit seconds is over";
            else state.result.accident = "killed by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
        } else if (WEXITSTATUS(status) != EXIT_SUCCESS || state.result.bytes.empty()) {
            state.result.accident = "ended early, with status " + std::to_string(WEXITSTATUS(status));
        }
        state.finished = true;
        ++finished_;
    }

    // The task at the head of the line speaks at once, the others when it is their turn.
    void passOn() {
        for (; head_ < nextTask_; ++head_) {
            TaskState& state = states_[head_];
            if (!state.text.empty()) tasks_.said(head_, state.text);
            state.text.clear();
            if (!state.finished) return;
            tasks_.done(head_, state.result);
            state = TaskState();
        }
    }

    const WorkerTasks& tasks_;
    std::vector<TaskState> states_;
    std::vector<Worker> workers_;
    size_t nextTask_ = 0;
    size_t head_ = 0;
    size_t finished_ = 0;
};

} // namespace

void runWorkers(const WorkerTasks& tasks) { Pool(tasks).run(); }

} // namespace ntl
