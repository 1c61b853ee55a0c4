#pragma once

#include "author/server/Document.internal.h"
#include "author/server/Found.internal.h"
#include "author/server/Worker.internal.h"

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

struct Session;

/// The libraries that texts belong to: when they are judged, and what was found. A library is judged by a worker, one
/// at a time, when its texts have rested; a change ends the worker, so that what it finds is always of the texts that
/// there are.
class JudgedLibraries {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds rest{300};

    /// The text at the path is another one now, in the editor: those that it belongs to, or was read into, are to be
    /// judged.
    void touch(Session& session, const std::string& path);
    /// The same for a file on disk; only libraries that were judged before are judged again. A project file concerns
    /// all in its folder and below.
    void touchFile(Session& session, const std::string& path);
    /// Findings move along with a change of a document, in bytes; those that it touches are dropped.
    void move(const std::string& path, std::size_t offset, std::size_t oldLength, std::size_t newLength);
    /// Drops those of a text that was replaced.
    void drop(const std::string& path);
    /// From here on they stand where they are in the text now.
    void settle(const std::string& path, const Document& document, Encoding encoding);
    void clear(Session& session);

    std::vector<const FoundInFile*> in(const std::string& path) const;

    /// Whether something is being judged, or will be.
    bool isBusy() const { return worker_.isRunning() || nextWaiting() != all_.end(); }
    /// Readable when receive() has something to do; -1 when there is nothing to wait for.
    int descriptor() const { return worker_.descriptor(); }
    void receive(Session& session);
    /// Milliseconds until advance() has something to do; -1: for now, nothing.
    int timeout(const Session& session) const;
    /// Begins what is due; when in a hurry, without a rest.
    void advance(Session& session, bool isHurried);

private:
    struct Library {
        std::string document; ///< path of the text that changed last
        bool isWaiting = false;
        std::set<std::string> files; ///< that were read
        std::map<std::string, FoundInFile> found;
        std::string accident; ///< of the last judgement
    };
    using All = std::map<std::string, Library>;
    /// The judgement that is under way.
    struct Run {
        All::iterator library = {};
        Clock::time_point begin = {};
        bool hasFound = false;
        bool isThorough = false; ///< what was found
        std::string token = {};  ///< of the progress; empty: the client was not asked
        bool isShown = false;    ///< the progress
    };

    template <typename Body>
    void forEachIn(const std::string& path, Body&& body);
    const std::string& folderOf(const std::string& path);
    void await(Session& session, All::iterator library);
    void restart(Session& session);
    All::const_iterator nextWaiting() const;
    void start(Session& session, All::iterator library);
    void take(Session& session, FoundInLibrary&& found);
    void replace(Session& session, std::map<std::string, FoundInFile> found);
    void finish(Session& session);
    void showProgress(Session& session);
    void endProgress(Session& session);

    All all_; ///< by folder
    std::map<std::string, std::string> folders_;
    Clock::time_point due_;
    Worker worker_;
    Run run_;
    int tokens_ = 0;
};

} // namespace hdnt::author::server
