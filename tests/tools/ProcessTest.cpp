// What happens to processes and streams around a command.
#include "tests/tools/NtlTool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <thread>

namespace {

struct ProcessTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
};

pid_t waitForChildOf(pid_t process) {
    const std::string id = std::to_string(process);
    const std::string list = "/proc/" + id + "/task/" + id + "/children";
    for (int i = 0; i < 500; ++i) {
        const std::string children = readFile(list);
        if (!children.empty()) return std::stoi(children);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return -1;
}

} // namespace

TEST_F(ProcessTest, KilledWorkerCountsAsFailedInput) {
    directory.write("good.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    ASSERT_EQ(mkfifo(directory.path("waits.btl").c_str(), 0600), 0);
    const pid_t tool = ntl.start({"check", "waits.btl", "good.btl"});
    const pid_t worker = waitForChildOf(tool);
    ASSERT_GT(worker, 0);
    kill(worker, SIGKILL);
    const Outcome outcome = ntl.finish(tool);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ntl: waits.btl: killed by signal 9 (Killed)\n");
    EXPECT_EQ(outcome.out, "good.btl: 1 block, no errors\n2 libraries: 1 with errors\n");
}

#ifndef HDNT_SANITIZED
TEST_F(ProcessTest, MemoryRunsOutInOneWorkerOnly) {
    std::string blocks;
    for (int i = 0; i < 60000; ++i) blocks += "block \"B" + std::to_string(i) + "\" { pin \"A[99:0]\" input; }\n";
    directory.write("big.btl", libraryOf(blocks));
    directory.write("good.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    ntl.addressSpace = size_t{64} << 20;
    const Outcome outcome = ntl.run({"check", "big.btl", "good.btl"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ntl: big.btl: out of memory\n");
    EXPECT_EQ(outcome.out, "good.btl: 1 block, no errors\n2 libraries: 1 with errors\n");
}
#endif

// More files than may be open at once: as inputs, in a folder, and as files included by one.
TEST_F(ProcessTest, FilesAreClosedOnceTheyAreRead) {
    constexpr int count = 60;
    std::vector<std::string> inputs = {"check", "-I.", "--jobs", "2", "folder", "all.btl"};
    std::string includes;
    directory.makeDir("folder");
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        directory.write("part" + number + ".inc", "block \"P" + number + "\" { pin \"A\" input; }\n");
        includes += "INCLUDE part" + number + ".inc;\n";
        directory.write("folder/" + number + ".btl", libraryOf("block \"F" + number + "\" { pin \"A\" input; }"));
        inputs.push_back("folder/" + number + ".btl");
    }
    directory.write("all.btl", libraryOf(includes));
    ntl.descriptors = 24;
    const Outcome outcome = ntl.run(inputs);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.find("folder: 60 blocks, no errors, 60 warnings\nall.btl: 60 blocks"), 0U) << outcome.out;
    EXPECT_NE(outcome.out.find("\n62 libraries: no errors"), outcome.out.npos) << outcome.out;
    inputs = {inputs.begin() + 6, inputs.end()};
    inputs.insert(inputs.begin(), {"format", "--check"});
    EXPECT_EQ(countOf(ntl.run(inputs).out, "folder/"), 60U); // in another style, all of them
    EXPECT_EQ(countOf(ntl.run({"print", "folder"}).out, "block \"F"), 60U);
}

TEST_F(ProcessTest, OutputThatCannotBeWritten) {
    directory.write("good.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const int full = open("/dev/full", O_WRONLY);
    const std::vector<std::vector<std::string>> commands = {
        {"check", "good.btl"}, {"check", "--format=json", "good.btl"}, {"list"}, {"show", "HOLD"}, {"--help"},
        {"print", "good.btl"}};
    for (const int descriptor : {ends[1], full, -2}) {
        for (const std::vector<std::string>& command : commands) {
            ntl.standardOutput = descriptor;
            const Outcome outcome = ntl.run(command);
            EXPECT_EQ(outcome.status, 2) << command[0];
            EXPECT_EQ(outcome.err.find("ntl: cannot write to standard output: "), 0U) << outcome.err;
        }
    }
}

// The process of the input is killed as soon as the terminal says how far it is.
TEST_F(ProcessTest, ALongLintSaysHowFarItIs) {
    std::string text = "function int intProperty(string);\n";
    for (int i = 0; i < 4000; ++i) {
        text += "block \"B" + std::to_string(i) + "\" { pin \"I\" input; pin \"O\" output;\n";
        std::string tests;
        for (int property = 0; property < 40; ++property) {
            const std::string name = "P" + std::to_string(property);
            text += "property int \"" + name + "\" { min = 0, max = 9 }\n";
            tests += "if (intProperty(\"" + name + "\") > 4) signal \"s" + name + "\" : \"I\", \"O\";\n";
        }
        text += "} mapsto { signal \"s\" : \"I\", \"O\";\n" + tests;
        text += "}\n";
    }
    directory.write("long.btl", libraryOf(text));
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    ntl.environment["TERM"] = "xterm";
    ntl.standardError = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    const pid_t tool = ntl.start({"lint", "--budget", "1000000", "long.btl"});
    close(ntl.standardError);
    const pid_t worker = waitForChildOf(tool);
    ASSERT_GT(worker, 0); // any other number is not of one process
    std::string written;
    std::array<char, 4096> buffer;
    bool killed = false;
    for (ssize_t count = 0; (count = read(terminal, buffer.data(), buffer.size())) > 0;) { // until the tool ends
        written.append(buffer.data(), static_cast<size_t>(count));
        const bool seen =
            written.find("% long.btl: ") != written.npos && written.find(" of 4,000 blocks") != written.npos;
        if (seen && !killed) killed = kill(worker, SIGKILL) == 0;
    }
    EXPECT_TRUE(killed) << written;
    EXPECT_EQ(ntl.finish(tool).status, 1);
    close(terminal);
}

TEST_F(ProcessTest, ColoursAreTheToolsOwn) {
    directory.write("bad.btl", libraryOf("block \"OWN\" { pin \"O\" output tieLow; }"));
    const Outcome plain = ntl.run({"check", "bad.btl"});
    EXPECT_EQ(plain.err.find('\033'), std::string::npos);
    const Outcome colored = ntl.run({"check", "--color=always", "bad.btl"});
    EXPECT_EQ(linesOf(colored.err).back(), "\033[1mntl:\033[0m bad.btl: 1 error");
    EXPECT_EQ(countOf(colored.err, "\033"), 2U);
    EXPECT_NE(ntl.run({"list", "--color=always"}).out.find("\033[1mNAME"), std::string::npos);
}

TEST_F(ProcessTest, OnATerminalColoursDependOnItsKind) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int itsOtherEnd = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    const struct {
        const char* kind;
        const char* when;
        bool isColored;
    } cases[] = {{"xterm", "auto", true}, {"dumb", "auto", false}, {"dumb", "always", true}, {"xterm", "never", false}};
    for (const auto& each : cases) {
        ntl.environment["TERM"] = each.kind;
        ntl.standardOutput = itsOtherEnd;
        EXPECT_EQ(ntl.run({"list", "--prefix", "GATE_AND_2", "--color", each.when}).status, 0);
        std::string written(4096, '\0');
        written.resize(static_cast<size_t>(read(terminal, written.data(), written.size())));
        EXPECT_EQ(written.find('\033') != std::string::npos, each.isColored) << each.kind << written;
    }
    close(itsOtherEnd);
    close(terminal);
}
