#include "author/server/JudgedLibraries.internal.h"
#include "author/server/judgeFolder.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace hdnt::author::server {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds showsAfter{1000};

int millisecondsTo(JudgedLibraries::Clock::time_point time) {
    const auto left = std::chrono::ceil<milliseconds>(time - JudgedLibraries::Clock::now());
    return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

bool isBelow(const std::string& path, const fs::path& folder) {
    const fs::path relative = fs::path(path).lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

void keepThorough(FoundInFile& from, FoundInFile& to) {
    const auto placeOf = [](const Found& one) { return one.spot.bytes ? one.spot.bytes->begin : 0; };
    for (Found& one : from.list)
        if (one.isThorough) to.list.push_back(std::move(one));
    std::ranges::stable_sort(to.list, {}, placeOf);
}

} // namespace

// A look into the folders at each key stroke is too much.
const std::string& JudgedLibraries::folderOf(const std::string& path) {
    const auto known = folders_.find(path);
    return known != folders_.end() ? known->second : folders_[path] = libraryOf(path).path;
}

void JudgedLibraries::touch(Session& session, const std::string& path) {
    if (path.empty()) return;
    if (const std::string& folder = folderOf(path); !folder.empty()) all_[folder].document = path;
    for (auto library = all_.begin(); library != all_.end(); ++library)
        if (library->second.document == path || library->second.files.contains(path)) await(session, library);
    restart(session);
}

void JudgedLibraries::touchFile(Session& session, const std::string& path) {
    const fs::path file(path);
    const bool isProject = file.filename() == ".ntl.cfg";
    folders_.clear();
    const std::string folder = isProject ? "" : folderOf(path);
    for (auto library = all_.begin(); library != all_.end(); ++library) {
        const bool isOwn = isProject ? isBelow(library->first, file.parent_path()) : library->first == folder;
        if (isOwn || library->second.files.contains(path)) await(session, library);
    }
}

// What is under way is of other texts than there are now.
void JudgedLibraries::await(Session& session, All::iterator library) {
    library->second.isWaiting = true;
    due_ = Clock::now() + rest;
    restart(session);
}

void JudgedLibraries::restart(Session& session) {
    if (!worker_.isRunning()) return;
    worker_.end();
    endProgress(session);
    run_.library->second.isWaiting = true;
    due_ = Clock::now() + rest;
}

template <typename Body>
void JudgedLibraries::forEachIn(const std::string& path, Body&& body) {
    for (auto& [folder, library] : all_)
        if (const auto in = library.found.find(path); in != library.found.end()) body(in->second);
}

void JudgedLibraries::move(const std::string& path, std::size_t offset, std::size_t oldLength, std::size_t newLength) {
    forEachIn(path, [&](FoundInFile& in) {
        std::erase_if(in.list, [&](Found& one) { return !one.spot.move(offset, oldLength, newLength); });
    });
    // Related places may be in any file.
    for (auto& [folder, library] : all_)
        for (auto& [file, in] : library.found)
            for (Found& one : in.list)
                std::erase_if(one.related, [&](Found::Related& related) {
                    return related.path == path && !related.spot.move(offset, oldLength, newLength);
                });
}

void JudgedLibraries::drop(const std::string& path) {
    for (auto& [folder, library] : all_) {
        if (const auto in = library.found.find(path); in != library.found.end()) in->second = {};
        for (auto& [file, in] : library.found)
            for (Found& one : in.list)
                std::erase_if(one.related, [&](const Found::Related& related) { return related.path == path; });
    }
}

void JudgedLibraries::settle(const std::string& path, const Document& document, Encoding encoding) {
    RangeFinder ranges(document, encoding);
    const auto settleOne = [&](Spot& spot) {
        if (spot.bytes) spot.range = ranges.at(*spot.bytes);
    };
    for (auto& [folder, library] : all_)
        for (auto& [file, in] : library.found)
            for (Found& one : in.list) {
                if (file == path) settleOne(one.spot);
                for (Found::Related& related : one.related)
                    if (related.path == path) settleOne(related.spot);
            }
}

void JudgedLibraries::clear(Session& session) {
    worker_.end();
    endProgress(session);
    all_.clear();
}

std::vector<const FoundInFile*> JudgedLibraries::in(const std::string& path) const {
    std::vector<const FoundInFile*> found;
    for (const auto& [folder, library] : all_)
        if (const auto in = library.found.find(path); in != library.found.end()) found.push_back(&in->second);
    return found;
}

JudgedLibraries::All::const_iterator JudgedLibraries::nextWaiting() const {
    return std::find_if(all_.begin(), all_.end(), [](const auto& each) { return each.second.isWaiting; });
}

int JudgedLibraries::timeout(const Session& session) const {
    if (worker_.isRunning())
        return run_.token.empty() && session.canClient("/window/workDoneProgress")
                   ? millisecondsTo(run_.begin + showsAfter)
                   : -1;
    return nextWaiting() == all_.end() ? -1 : millisecondsTo(due_);
}

void JudgedLibraries::advance(Session& session, bool isHurried) {
    if (worker_.isRunning()) {
        if (timeout(session) == 0) showProgress(session);
        return;
    }
    const auto next = nextWaiting();
    if (next != all_.end() && (isHurried || millisecondsTo(due_) == 0)) start(session, all_.find(next->first));
}

void JudgedLibraries::start(Session& session, All::iterator library) {
    library->second.isWaiting = false;
    run_ = {library, Clock::now()};
    const auto work = [&](const Worker::Send& send) {
        judgeFolder(taskOf(session, library->second.document),
                    [&](const FoundInLibrary& found) { send(packed(found)); });
    };
    if (!worker_.start(work)) log(session, library->first + " is not judged: no process can be started");
}

void JudgedLibraries::receive(Session& session) {
    for (const std::string& message : worker_.receive()) take(session, unpacked(message));
    if (!worker_.isRunning()) finish(session);
}

// What only comes of trying mappings is said until the mappings were tried again.
void JudgedLibraries::take(Session& session, FoundInLibrary&& found) {
    Library& library = run_.library->second;
    library.files = std::move(found.files);
    run_.hasFound = true;
    run_.isThorough = found.isThorough;
    if (!found.isThorough)
        for (auto& [path, before] : library.found) keepThorough(before, found.found[path]);
    replace(session, std::move(found.found));
}

void JudgedLibraries::replace(Session& session, std::map<std::string, FoundInFile> found) {
    std::map<std::string, FoundInFile> before = std::exchange(run_.library->second.found, std::move(found));
    before.insert(run_.library->second.found.begin(), run_.library->second.found.end());
    for (const auto& [path, in] : before) publishFound(session, path);
}

// Of what was not judged to the end, nothing older is said.
void JudgedLibraries::finish(Session& session) {
    endProgress(session);
    Library& library = run_.library->second;
    const std::string accident = worker_.accident();
    if (!accident.empty()) {
        std::map<std::string, FoundInFile> left;
        if (run_.hasFound) left = library.found;
        for (auto& [path, in] : left)
            if (!run_.isThorough) std::erase_if(in.list, [](const Found& one) { return one.isThorough; });
        replace(session, std::move(left));
        if (library.accident != accident)
            log(session,
                run_.library->first + (run_.hasFound ? " is not judged to the end: " : " is not judged: ") + accident);
    }
    library.accident = accident;
}

void JudgedLibraries::showProgress(Session& session) {
    run_.token = "ntl-" + std::to_string(++tokens_);
    const std::string folder = fs::path(run_.library->first).filename().string();
    session.ask("window/workDoneProgress/create", {{"token", run_.token}},
                [this, &session, token = run_.token, folder](const Json& answer) {
                    if (run_.token != token || !worker_.isRunning() || answer.contains("error")) return;
                    run_.isShown = true;
                    session.notify("$/progress",
                                   {{"token", token}, {"value", {{"kind", "begin"}, {"title", "Judging " + folder}}}});
                });
}

void JudgedLibraries::endProgress(Session& session) {
    if (std::exchange(run_.isShown, false))
        session.notify("$/progress", {{"token", run_.token}, {"value", {{"kind", "end"}}}});
    run_.token.clear();
}

} // namespace hdnt::author::server
