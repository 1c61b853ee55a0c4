#include "author/format/HDNTFormatter.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/TextFile.h"

#include <algorithm>
#include <csignal>

namespace ntl {

static Status refuse(const std::string& path, const HDNTFormatProblem& problem) {
    const std::string more = problem.count > 1 ? " (and " + std::to_string(problem.count - 1) + " more)" : "";
    writeError(printable(path + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": ") +
               colored(Color::Red, "error:", 2) + " " + printable(problem.reason) + more + "\n");
    complain(path + ": not formatted");
    return Faulty;
}

static Status formatFile(const std::string& path, const Settings& settings) {
    const TextFile file(path);
    std::string text;
    HDNTFormatProblem problem;
    if (!HDNTFormatter::format(file.bytes(), text, problem)) return refuse(path, problem);
    if (!settings.checkOnly && !settings.inPlace) {
        writeOutput(text);
        return Fine;
    }
    if (text == file.bytes()) return Fine;
    if (settings.checkOnly) {
        writeOutput(path + "\n");
        return Faulty;
    }
    file.replace(text);
    return Fine;
}

int runFormat(const Settings& settings) {
    if (settings.checkOnly && settings.inPlace)
        throw Failure(Unusable, "--check and --in-place exclude each other; see 'ntl format --help'");
    if (settings.inPlace && std::count(settings.files.begin(), settings.files.end(), "-") > 0)
        throw Failure(Unusable, "--in-place: standard input cannot be replaced");
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is a failed write like any other
    Status status = Fine;
    for (const std::string& path : settings.files) {
        try {
            status = std::max(status, formatFile(path, settings));
        } catch (const Failure& failure) {
            complain(failure.what());
            status = std::max(status, failure.status());
        }
    }
    return status;
}

} // namespace ntl
