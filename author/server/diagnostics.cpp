#include "author/lint/lint.h"
#include "author/server/Workspace.internal.h"
#include "author/server/judgeFolder.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/ConfigBase.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

namespace hdnt::author::server {

namespace {

namespace fs = std::filesystem;
using Said = Found::Said;

/// What is said of a code elsewhere.
class Explanations {
public:
    explicit Explanations(const Session& session)
        : links_(session.canClient("/textDocument/publishDiagnostics/codeDescriptionSupport") ? page() : std::string()),
          explains_(session.canClient("/textDocument/publishDiagnostics/dataSupport")) {}

    void addTo(Json& said) const {
        const auto code = said.find("code");
        if (code == said.end()) return;
        const auto& name = code->get_ref<const std::string&>();
        if (!links_.empty() && rules().contains(name)) said["codeDescription"] = {{"href", links_ + '#' + name}};
        else if (const DiagnosticRule* const rule = explains_ ? findRule(name) : nullptr)
            said["data"] = {{"explanation", rule->explanation}};
    }

private:
    // Beside the installed data.
    static std::string page() {
        const fs::path data = ConfigBase::getDataLocation("cellviews.csv");
        const fs::path page = data.parent_path().parent_path().parent_path() / "doc" / "hdnt" / "docs" / "lint.md";
        std::error_code error;
        return !data.empty() && fs::is_regular_file(page, error) ? uriOf(fs::absolute(page).lexically_normal().string())
                                                                 : std::string();
    }

    static const std::set<std::string_view>& rules() {
        static const std::set<std::string_view> all = [] {
            std::set<std::string_view> names;
            for (const RuleGroup& group : ruleGroups())
                if (group.isOfRules)
                    for (const DiagnosticRule* rule : group.rules) names.insert(rule->name);
            return names;
        }();
        return all;
    }

    std::string links_;
    bool explains_;
};

/// All that is said of one file, as the protocol has it.
class Diagnostics {
public:
    /// The document is null when the file is not open.
    Diagnostics(const Session& session, const std::string& uri, const Document* document)
        : session_(session), uri_(uri), document_(document), explanations_(session),
          knowsRelated_(session.canClient("/textDocument/publishDiagnostics/relatedInformation")) {
        const Json none = Json::array();
        const Json known =
            session.clientCapabilities.value("/textDocument/publishDiagnostics/tagSupport/valueSet"_json_pointer, none);
        if (known.is_array()) tags_ = known;
    }

    Json list() {
        if (document_) {
            ranges_.emplace(*document_, session_.encoding);
            relatedRanges_.emplace(*document_, session_.encoding);
            addTree();
        }
        const std::vector<const FoundInFile*> found = session_.libraries.in(pathOf(uri_));
        for (const FoundInFile* in : found) {
            left_ += in->more;
            for (const Found& one : in->list)
                if (!isSaidByTree(one)) add([&] { return jsonOf(one); });
        }
        if (found.size() > 1) dropRepeated();
        if (left_ > 0) addLeft();
        return std::move(all_);
    }

private:
    template <typename Make>
    void add(Make&& make) {
        if (all_.size() < mostDiagnostics) all_.push_back(make());
        else ++left_;
    }

    void addTree() {
        if (document_->tree().nodes().empty()) all_.push_back(refusal());
        for (const SyntaxMessage& message : document_->tree().messages()) add([&] { return jsonOf(message); });
        for (const SyntaxMessage& message : document_->tree().messages()) {
            lines_.insert(document_->lines().lineAt(message.offset));
            hasError_ = hasError_ || ruleOf(message).severity == Severity::error;
        }
    }

    static const DiagnosticRule& ruleOf(const SyntaxMessage& message) {
        return syntaxRules()[static_cast<std::size_t>(message.code)];
    }

    // A fault of syntax that was found with the library is the same one, in other words.
    bool isSaidByTree(const Found& found) const {
        if (!document_ || found.how == Said::byRules) return false;
        if (found.how == Said::byTree) return true;
        const bool isError = found.said.at("severity") == severityOf(Severity::error);
        return (isError && hasError_) ||
               (found.spot.bytes && lines_.contains(document_->lines().lineAt(found.spot.bytes->begin)));
    }

    static int severityOf(Severity severity) {
        constexpr int error = 1, warning = 2, information = 3;
        return severity == Severity::error ? error : severity == Severity::warning ? warning : information;
    }

    Json jsonOf(const SyntaxMessage& message) {
        const DiagnosticRule& rule = ruleOf(message);
        Json said = {{"range", ranges_->at({message.offset, std::size_t{message.offset} + message.length})},
                     {"severity", severityOf(rule.severity)},
                     {"code", rule.name},
                     {"source", "ntl"},
                     {"message", message.text}};
        explanations_.addTo(said);
        if (message.relatedText.empty() || !knowsRelated_) return said;
        Json location = {
            {"uri", uri_},
            {"range", relatedRanges_->at({message.relatedOffset, std::size_t{message.relatedOffset} + 1})}};
        said["relatedInformation"] = {{{"location", std::move(location)}, {"message", message.relatedText}}};
        return said;
    }

    Json refusal() {
        return {{"range", ranges_->at({0, 0})},
                {"severity", severityOf(Severity::error)},
                {"source", "ntl"},
                {"message", document_->tree().refusal().reason}};
    }

    Json jsonOf(const Found& found) {
        Json said = found.said;
        said["range"] = rangeAt(found.spot, ranges_);
        explanations_.addTo(said);
        if (const auto tags = said.find("tags"); tags != said.end()) {
            const auto isUnknown = [&](const Json& tag) {
                return std::find(tags_.begin(), tags_.end(), tag) == tags_.end();
            };
            if (std::any_of(tags->begin(), tags->end(), isUnknown)) said.erase(tags);
        }
        if (!knowsRelated_) return said;
        for (const Found::Related& related : found.related) said["relatedInformation"].push_back(jsonOf(related));
        return said;
    }

    Json jsonOf(const Found::Related& related) {
        const std::string uri = session_.uriAt(related.path);
        std::optional<RangeFinder> others;
        const Document* const other = uri == uri_ ? nullptr : session_.openAt(related.path);
        if (other) others.emplace(*other, session_.encoding);
        Json location = {{"uri", uri}, {"range", rangeAt(related.spot, uri == uri_ ? relatedRanges_ : others)}};
        return {{"location", std::move(location)}, {"message", related.message}};
    }

    // In the document when it is open, since that changes.
    static Json rangeAt(const Spot& spot, std::optional<RangeFinder>& open) {
        return spot.bytes && open ? open->at(*spot.bytes) : spot.range;
    }

    // A file may be part of several libraries.
    void dropRepeated() {
        std::set<std::string> seen;
        Json once = Json::array();
        for (Json& said : all_)
            if (seen.insert(said.dump(-1, ' ', false, Json::error_handler_t::replace)).second)
                once.push_back(std::move(said));
        all_ = std::move(once);
    }

    void addLeft() {
        for (; all_.size() >= mostDiagnostics; ++left_) all_.erase(all_.size() - 1);
        const Json begin = server::jsonOf(Position());
        all_.push_back({{"range", {{"start", begin}, {"end", begin}}},
                        {"severity", severityOf(Severity::note)},
                        {"source", "ntl"},
                        {"message", std::to_string(left_) + " more are not shown"}});
    }

    const Session& session_;
    const std::string& uri_;
    const Document* document_;
    Explanations explanations_;
    bool knowsRelated_;
    Json tags_ = Json::array();                ///< that the client knows
    std::optional<RangeFinder> ranges_;        ///< of the document
    std::optional<RangeFinder> relatedRanges_; ///< likewise
    std::set<std::size_t> lines_;              ///< that the tree says something of
    bool hasError_ = false;                    ///< the tree
    Json all_ = Json::array();
    std::size_t left_ = 0;
};

void publish(Session& session, const std::string& uri, Json list, const Document* document) {
    if (list.empty()) session.published.erase(uri);
    else session.published[uri] = std::hash<Json>()(list);
    Json params = {{"uri", uri}, {"diagnostics", std::move(list)}};
    if (document && document->version) params["version"] = *document->version;
    session.notify("textDocument/publishDiagnostics", std::move(params));
}

} // namespace

void publishDiagnostics(Session& session, const std::string& uri, const Document& document) {
    publish(session, uri, Diagnostics(session, uri, &document).list(), &document);
}

void publishChanged(Session& session) {
    for (const std::string& uri : std::exchange(session.changed, {}))
        if (const auto open = session.documents.find(uri); open != session.documents.end())
            publishDiagnostics(session, uri, open->second);
}

void publishClosed(Session& session, const std::string& uri) {
    publish(session, uri, Diagnostics(session, uri, nullptr).list(), nullptr);
}

void publishFound(Session& session, const std::string& path) {
    const std::string uri = session.uriAt(path);
    const Document* const document = session.openAt(path);
    Json list = Diagnostics(session, uri, document).list();
    const auto before = session.published.find(uri);
    if (before == session.published.end() ? list.empty() : before->second == std::hash<Json>()(list)) return;
    publish(session, uri, std::move(list), document);
}

void log(const Session& session, const std::string& text) {
    constexpr int warning = 2;
    session.notify("window/logMessage", {{"type", warning}, {"message", text}});
}

} // namespace hdnt::author::server
