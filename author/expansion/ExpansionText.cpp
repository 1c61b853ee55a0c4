#include "author/expansion/ExpansionText.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

namespace hdnt::author {

using Expansion = HDNTExpansion;
using platform::printable;

static std::string quoted(const std::string& text) { return '"' + text + '"'; }

std::string ntlValue(const Expansion::Value& value) {
    const auto* const number = std::get_if<double>(&value);
    if (number && !std::isfinite(*number)) return "";
    const auto* const text = std::get_if<std::string>(&value);
    if (!text) return Expansion::textOf(value);
    return text->find_first_of("\"\n") == text->npos ? quoted(*text) : "";
}

std::string callText(const Expansion::Call& call) {
    std::string arguments;
    for (const Expansion::Value& value : call.arguments) {
        const std::string text = ntlValue(value);
        arguments += (arguments.empty() ? "" : ", ") + (text.empty() ? Expansion::textOf(value) : text);
    }
    return call.name + "(" + arguments + ")";
}

namespace {

/// The lines of one level, the comments behind them aligned.
class LevelText {
public:
    LevelText(const ExpandedBlock& expanded, const Expansion::Level& level) : expanded_(expanded), level_(level) {
        for (const Expansion::Connection& connection : level.connections)
            connections_[connection.signal].push_back(&connection);
    }

    std::string text() {
        addHeader();
        for (const Expansion::Branch& branch : level_.branches)
            addComment("if at " + placeText(branch.origin) + (branch.taken ? " holds" : " does not hold") +
                       within(branch.origin));
        for (const Expansion::Instance& instance : level_.instances) addInstance(instance);
        for (const Expansion::Signal& signal : level_.signals) addSignal(signal.name, &signal.origin);
        for (const Expansion::Connection& connection : level_.connections) addSignal(connection.signal, nullptr);
        for (const Expansion::Instance& instance : level_.instances)
            for (const Expansion::PropertyValue& property : instance.properties) addProperty(instance.name, property);
        for (const Expansion::PropertyValue& property : level_.pinProperties) addProperty({}, property);
        for (const Expansion::Call& call : level_.calls)
            addComment("call " + callText(call) + (call.made ? ", made" : ", for the host to make") + ": " +
                       reasonFor(call.origin));
        add("}", "");
        return laidOut();
    }

private:
    struct Line {
        std::string code;
        std::string comment;
    };

    void add(const std::string& code, const std::string& comment) { lines_.push_back({code, comment}); }
    void addComment(const std::string& text) { add("    ", text); }
    void addStatement(const std::string& code, const std::string& comment) { add("    " + code + ";", comment); }

    void addHeader() {
        std::string given;
        const auto addGiven = [&](const std::string& text) { given.append(given.empty() ? "; with " : ", ") += text; };
        if (level_.path.empty()) {
            for (const auto& [name, value] : expanded_.properties) addGiven(std::string(name).append(" = ") += value);
            for (const std::string& pin : expanded_.connectedPins) addGiven(pin + " connected");
        } else {
            add("", level_.path);
        }
        add("block " + quoted(level_.block->getName()) + " " + std::string(words::sections.wordOf(level_.section)) +
                " {",
            expanded_.brief(level_.location) + given);
    }

    void addInstance(const Expansion::Instance& instance) {
        std::string comment = reasonFor(instance.origin);
        if (instance.level != Expansion::none)
            comment += "; expanded below as " + expanded_.expansion.levels()[instance.level].path;
        addStatement("inst " + quoted(instance.name) + " " + quoted(instance.type), comment);
    }

    // The declaration takes the pins of the first statement, so that a name in brackets stays a name.
    void addSignal(const std::string& name, const Expansion::Origin* declared) {
        if (!writtenSignals_.insert(name).second) return;
        const std::vector<const Expansion::Connection*>& pins = connections_[name];
        const std::string comment = declared ? reasonFor(*declared) : "not declared";
        if (pins.empty()) return addStatement("signal " + quoted(name), comment);
        for (std::size_t i = 0; i < pins.size();) {
            const std::string reason = reasonFor(pins[i]->origin);
            std::string code = (i == 0 ? "signal " : "connect ") + quoted(name) + " : ";
            const std::string note = i == 0 && comment != reason ? "; signal: " + comment : "";
            const std::size_t first = i;
            for (; i < pins.size() && reasonFor(pins[i]->origin) == reason; ++i)
                code += (i == first ? "" : ", ") + pinText(*pins[i]);
            addStatement(code, reason + note);
        }
    }

    static std::string pinText(const Expansion::Connection& connection) {
        const std::string pin = quoted((connection.inverted ? "~" : "") + connection.pin);
        return connection.instance.empty() ? pin : quoted(connection.instance) + " " + pin;
    }

    // An empty instance name means the block's own pin.
    void addProperty(const std::string& instance, const Expansion::PropertyValue& property) {
        const std::string value = ntlValue(property.value);
        const std::string name = instance.empty() ? std::string() : quoted(instance) + " ";
        const std::string target = property.pin.empty() ? "assign block property " + name
                                                        : "assign pin property " + name + quoted(property.pin) + ", ";
        const std::string code = target + quoted(property.name) + " ";
        if (!value.empty()) return addStatement(code + value, reasonFor(property.origin));
        addComment("no NTL for: " + code + Expansion::textOf(property.value) + ": " + reasonFor(property.origin));
    }

    std::string placeText(const Expansion::Origin& origin) const { return expanded_.brief(origin.location); }

    // The branches around a statement, the innermost first.
    std::string within(const Expansion::Origin& origin) const {
        std::string text;
        for (std::size_t i = origin.branch; i != Expansion::none; i = level_.branches[i].origin.branch)
            text += std::string(", in ") + (level_.branches[i].taken ? "then" : "else") + " of if at " +
                    placeText(level_.branches[i].origin);
        return text;
    }

    std::string reasonFor(const Expansion::Origin& origin) const { return placeText(origin) + within(origin); }

    std::string laidOut() const {
        constexpr std::size_t farthest = 64;
        std::size_t column = 0;
        for (const Line& line : lines_)
            if (line.code.size() <= farthest) column = std::max(column, line.code.size());
        std::string text;
        for (const Line& line : lines_) {
            const bool alone = line.code.find_first_not_of(' ') == line.code.npos;
            text += line.code;
            if (!line.comment.empty()) {
                if (!alone) text += std::string(column > line.code.size() ? column - line.code.size() : 0, ' ') + "  ";
                text += "// " + printable(line.comment);
            }
            text += "\n";
        }
        return text;
    }

    const ExpandedBlock& expanded_;
    const Expansion::Level& level_;
    std::unordered_map<std::string, std::vector<const Expansion::Connection*>> connections_;
    std::set<std::string> writtenSignals_;
    std::vector<Line> lines_;
};

} // namespace

std::string expansionText(const ExpandedBlock& expanded) {
    std::string text;
    for (const Expansion::Level& level : expanded.expansion.levels())
        text += (text.empty() ? "" : "\n") + LevelText(expanded, level).text();
    return text;
}

std::string BriefPlaces::brief(const Place& place) {
    if (place.file.empty()) return "(unknown place)";
    const std::string name = HUTPathUtils::leafOf(place.file);
    const std::string& first = fileByName_.emplace(name, place.file).first->second;
    const std::string& shown = first == place.file ? name : place.file;
    return place.isKnown() ? shown + ":" + std::to_string(place.line) : shown;
}

} // namespace hdnt::author
