#include "author/format/HDNTFormatter.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/TextFile.h"

#include <algorithm>
#include <filesystem>

namespace ntl {

static Status refuse(const std::string& path, const HDNTFormatProblem& problem) {
    const std::string more = problem.count > 1 ? " (and " + std::to_string(problem.count - 1) + " more)" : "";
    writeError(printable(path + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": ") +
               colored(Color::Red, "error:", 2) + " " + printable(problem.reason) + more + "\n");
    complain(path + ": not formatted");
    return Faulty;
}

static std::string withNewlines(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') result += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n') result += '\n';
    }
    return result;
}

static Status formatFile(const std::string& path, const Settings& settings) {
    const TextFile file(path);
    std::string text;
    HDNTFormatProblem problem;
    const std::string before = settings.fixLineEnds ? withNewlines(file.bytes()) : file.bytes();
    if (!HDNTFormatter::format(before, text, problem)) return refuse(path, problem);
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

// The .btl files in and below a folder, by name; links to folders are not followed. Another path is itself.
static std::vector<std::string> filesOf(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (path == "-" || !fs::is_directory(path, error)) return {path};
    std::vector<std::string> files;
    for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().extension() == ".btl" && !entry->is_directory()) files.push_back(entry->path().string());
    if (error) throw Failure(Unusable, path + ": cannot be read: " + error.message());
    if (files.empty()) throw Failure(Unusable, path + ": holds no .btl file");
    std::sort(files.begin(), files.end());
    return files;
}

static Status formatAll(const std::string& input, const Settings& settings) {
    Status status = Fine;
    for (const std::string& path : filesOf(input)) {
        try {
            status = std::max(status, formatFile(path, settings));
        } catch (const Failure& failure) {
            complain(failure.what());
            status = std::max(status, failure.status());
        }
    }
    return status;
}

int runFormat(const Settings& settings) {
    if (settings.checkOnly && settings.inPlace)
        throw Failure(Unusable, "--check and --in-place exclude each other; see 'ntl format --help'");
    if (settings.inPlace && std::count(settings.files.begin(), settings.files.end(), "-") > 0)
        throw Failure(Unusable, "--in-place: standard input cannot be replaced");
    Status status = Fine;
    for (const std::string& input : settings.files) {
        try {
            status = std::max(status, formatAll(input, settings));
        } catch (const Failure& failure) {
            complain(failure.what());
            status = std::max(status, failure.status());
        }
    }
    return status;
}

} // namespace ntl
