#include "tests/tools/NtlTool.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

void NtlTool::become(const std::vector<std::string>& arguments) const {
    const auto redirect = [](const std::string& path, int descriptor) {
        dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), descriptor);
    };
    redirect(directory_.path(".out"), STDOUT_FILENO);
    redirect(directory_.path(".err"), STDERR_FILENO);
    if (standardOutput >= 0) dup2(standardOutput, STDOUT_FILENO);
    if (standardOutput == -2) close(STDOUT_FILENO);
    if (standardError >= 0) dup2(standardError, STDERR_FILENO);
    for (const char* name :
         {"NTL_PATH", "NTL_DEBUG", "NTL_YY_DEBUG", "HDNT_DATA_PATH", "HDNT_CONFIG_PATH", "HDNT_CELLVIEWS", "NO_COLOR"})
        unsetenv(name);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    if (!standardInput.empty()) dup2(open(standardInput.c_str(), O_RDONLY), STDIN_FILENO);
    const auto bound = [](int resource, size_t most) {
        const rlimit limit = {most, most};
        if (most > 0) setrlimit(static_cast<__rlimit_resource>(resource), &limit);
    };
    bound(RLIMIT_AS, addressSpace);
    bound(RLIMIT_FSIZE, fileSize);
    bound(RLIMIT_NOFILE, descriptors);
    std::vector<std::string> words = {NTL_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv(words.size() + 1);
    for (size_t i = 0; i < words.size(); ++i) argv[i] = words[i].data();
    if (chdir(directory_.path().c_str()) == 0) execv(NTL_TOOL, argv.data());
    _exit(127);
}

pid_t NtlTool::start(const std::vector<std::string>& arguments) {
    const pid_t process = fork();
    if (process == 0) become(arguments);
    return process;
}

Outcome NtlTool::finish(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    Outcome outcome;
    outcome.status = WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
    outcome.out = readFile(directory_.path(".out"));
    outcome.err = readFile(directory_.path(".err"));
    return outcome;
}

Outcome NtlTool::run(const std::vector<std::string>& arguments) { return finish(start(arguments)); }

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

size_t countOf(const std::string& text, const std::string& what) {
    size_t count = 0;
    for (size_t at = text.find(what); at != text.npos; at = text.find(what, at + what.size())) ++count;
    return count;
}

std::string libraryOf(const std::string& text) { return "library \"l\" {\n" + text + "\n}\n"; }
