#include "author/server/methods.internal.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

namespace {

/// The messages of a tree as the protocol has them.
class Diagnostics {
public:
    Diagnostics(const Session& session, const std::string& uri, const Document& document)
        : uri_(uri), document_(document), positions_(document, session.encoding), related_(document, session.encoding),
          knowsRelated_(session.canClient("/textDocument/publishDiagnostics/relatedInformation")) {}

    Json list() {
        Json all = Json::array();
        if (document_.tree().nodes().empty()) all.push_back(refusal());
        for (const SyntaxMessage& message : document_.tree().messages()) all.push_back(diagnosticOf(message));
        return all;
    }

private:
    // What goes on behind its line is marked in its first one.
    Json stretchOf(PositionFinder& positions, std::size_t offset, std::size_t length) const {
        const LineIndex& lines = document_.lines();
        const std::size_t lineEnd = lines.end(document_.text(), lines.lineAt(offset));
        return rangeOf(positions, offset, std::min(offset + length, std::max(lineEnd, offset)));
    }

    static int severityOf(Severity severity) {
        constexpr int error = 1, warning = 2, information = 3;
        return severity == Severity::error ? error : severity == Severity::warning ? warning : information;
    }

    Json diagnosticOf(const SyntaxMessage& message) {
        const DiagnosticRule& rule = syntaxRules()[static_cast<std::size_t>(message.code)];
        Json said = {{"range", stretchOf(positions_, message.offset, message.length)},
                     {"severity", severityOf(rule.severity)},
                     {"code", rule.name},
                     {"source", "ntl"},
                     {"message", message.text}};
        if (message.relatedText.empty() || !knowsRelated_) return said;
        Json location = {{"uri", uri_}, {"range", stretchOf(related_, message.relatedOffset, 1)}};
        Json related = {{"location", std::move(location)}, {"message", message.relatedText}};
        said["relatedInformation"] = Json::array({std::move(related)});
        return said;
    }

    Json refusal() {
        return {{"range", rangeOf(positions_, 0, 0)},
                {"severity", severityOf(Severity::error)},
                {"source", "ntl"},
                {"message", document_.tree().refusal().reason}};
    }

    const std::string& uri_;
    const Document& document_;
    PositionFinder positions_;
    PositionFinder related_;
    bool knowsRelated_;
};

} // namespace

void publishDiagnostics(Session& session, const std::string& uri, const Document& document) {
    Json params = {{"uri", uri}, {"diagnostics", Diagnostics(session, uri, document).list()}};
    if (document.version) params["version"] = *document.version;
    session.notify("textDocument/publishDiagnostics", std::move(params));
}

} // namespace hdnt::author::server
