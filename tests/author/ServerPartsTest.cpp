// Parts of the server that no client sees.
#include "author/server/Worker.internal.h"
#include "author/server/Workspace.internal.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

using hdnt::author::server::Worker;
using Send = Worker::Send;

#ifdef HDNT_SANITIZED
constexpr bool limitsMemory = false;
#else
constexpr bool limitsMemory = true;
#endif

std::vector<std::string> allOf(Worker& worker) {
    std::vector<std::string> all;
    while (worker.isRunning())
        for (std::string& message : worker.receive()) all.push_back(std::move(message));
    return all;
}

void takeMuch() {
    if (!limitsMemory) throw std::bad_alloc();
    std::vector<std::string> texts;
    for (int gigabytes = 0; gigabytes < 6; ++gigabytes) texts.emplace_back().reserve(std::size_t{1} << 30);
    raise(SIGKILL); // nothing stopped it
}

void tellLimits(const Send& send) {
    rlimit processor{};
    rlimit dumps{};
    getrlimit(RLIMIT_CPU, &processor);
    getrlimit(RLIMIT_CORE, &dumps);
    send(std::to_string(processor.rlim_cur) + " s, " + std::to_string(dumps.rlim_cur) + " bytes of core");
    const unsigned left = alarm(0);
    send(left > 110 && left <= 120 ? "two minutes" : std::to_string(left));
    std::string open;
    for (int descriptor = 0; descriptor < 100; ++descriptor)
        if (std::filesystem::exists("/proc/self/fd/" + std::to_string(descriptor))) open += std::to_string(descriptor);
    send(open);
}

} // namespace

TEST(Worker, TellsWhatItFoundAndHowItEnded) {
    const std::string large(300000, 'x');
    const struct {
        std::function<void(const Send&)> work;
        std::vector<std::string> messages;
        std::string accident;
    } cases[] = {
        {[](const Send&) {}, {}, ""},
        {[&](const Send& send) { (send("a"), send(""), send(large), send("b")); }, {"a", "", large, "b"}, ""},
        {tellLimits, {"30 s, 0 bytes of core", "two minutes", "0123"}, ""},
        {[](const Send& send) { (send("a"), throw std::bad_alloc()); }, {"a"}, "out of memory"},
        {[](const Send&) { takeMuch(); }, {}, "out of memory"},
        {[](const Send& send) { (send("a"), throw 3); }, {"a"}, "ended early, with status 2"},
        {[](const Send&) { _exit(7); }, {}, "ended early, with status 7"},
        {[](const Send&) { raise(SIGKILL); }, {}, "killed by signal 9 (Killed)"},
        {[](const Send&) { raise(SIGXCPU); }, {}, "it took too long"},
        {[](const Send&) { raise(SIGALRM); }, {}, "it took too long"},
    };
    Worker worker;
    for (const auto& [work, messages, accident] : cases) {
        ASSERT_TRUE(worker.start(work));
        EXPECT_EQ(allOf(worker), messages) << accident;
        EXPECT_EQ(worker.accident(), accident);
        EXPECT_EQ(worker.descriptor(), -1);
    }
}

TEST(Worker, EndsAtOnceAndForTheNext) {
    const auto begin = std::chrono::steady_clock::now();
    const auto sleeps = [](const Send& send) {
        send("begun");
        std::this_thread::sleep_for(std::chrono::seconds(100));
    };
    Worker worker;
    ASSERT_TRUE(worker.start(sleeps));
    while (worker.isRunning() && worker.receive().empty()) {
    }
    worker.end();
    EXPECT_FALSE(worker.isRunning());
    EXPECT_EQ(worker.accident(), "");
    EXPECT_TRUE(worker.receive().empty());
    ASSERT_TRUE(worker.start(sleeps));
    ASSERT_TRUE(worker.start([](const Send& send) { send("next"); }));
    EXPECT_EQ(allOf(worker), std::vector<std::string>{"next"});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

TEST(Uris, NameFiles) {
    using hdnt::author::server::pathOf;
    using hdnt::author::server::uriOf;
    const struct {
        const char* uri;
        const char* path;
        bool isOwn = true; // as the server writes it
    } cases[] = {
        {"file:///a/b.btl", "/a/b.btl"},
        {"file:///a%20b/%C3%BC%25.btl", "/a b/\xc3\xbc%.btl"},
        {"file:///a/./c/../b.btl", "/a/b.btl", false},
        {"file://localhost/a/b.btl", "/a/b.btl", false},
        {"file:///a%2fb%4", "/a/b%4", false},
        {"file://host", "", false},
        {"untitled:Untitled-1", "", false},
    };
    for (const auto& [uri, path, isOwn] : cases) {
        EXPECT_EQ(pathOf(uri), path) << uri;
        EXPECT_EQ(uriOf(path) == uri, isOwn) << uriOf(path);
    }
}
