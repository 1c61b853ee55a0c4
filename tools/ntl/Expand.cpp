#include "author/lint/nearestNames.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HUTFile.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Expansion.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"

namespace ntl {

namespace {

std::vector<std::string> propertyNames(const HDNTBlock& block) {
    std::vector<std::string> names;
    for (const HDNTProperty& property : block.properties()) names.push_back(property.getName());
    return names;
}

std::vector<std::string> pinNames(const HDNTBlock& block) {
    std::vector<std::string> names;
    for (const HDNTBus& bus : block.buses()) {
        names.push_back(bus.getBaseName());
        if (bus.getFirstIndex() < 0) continue;
        for (const HDNTPin& pin : bus.pins()) names.push_back(pin.getName(false));
    }
    return names;
}

std::vector<std::string> listedTexts(const HDNTProperty& property) {
    return property.getType() == HATAttrTypes::TypeString ? property.getAllowedStringValues()
                                                          : std::vector<std::string>();
}

// Behind a sentence.
std::string sentence(const std::string& wanted, const std::vector<std::string>& names) {
    const std::string text = hdnt::author::question(wanted, names);
    return text.empty() ? text : " D" + text.substr(text.find('d') + 1);
}

/// Expands the blocks of a command line and collects what comes out.
class Expander {
public:
    explicit Expander(const Settings& settings) : settings_(settings) {
        for (const std::string& text : settings.propertyValues) properties_.push_back(splitAssignment("--set", text));
    }

    int run() {
        opened_ = openLibrary(settings_);
        if (settings_.allBlocks) expandAll();
        for (const std::string& name : settings_.blocks) {
            HDNTBlock* const block = findBlock(opened_, name);
            if (!block || !expand(*block)) status_ = Faulty;
        }
        if (settings_.expansionFormat == "json") {
            Json json = jsonHead("expand");
            json["path"] = opened_.path;
            json["architecture"] = orNull(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
            json["blocks"] = std::move(documents_);
            text_ = jsonText(json);
        }
        writeOutput(text_);
        return status_;
    }

private:
    void expandAll() {
        const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
        size_t mapped = 0;
        for (HDNTBlock* block : blocksOf(*opened_.library, opened_.withParents)) {
            if (!architecture.empty() && !isInArchitecture(*block, architecture)) continue;
            bool fine = loadMapping(*block);
            if (fine && block->getAttachedNetlist()) {
                ++mapped;
                fine = expand(*block);
            }
            if (!fine) status_ = Faulty;
        }
        if (mapped == 0 && status_ == Fine) throw Failure(Faulty, "no block has a mapping");
    }

    bool expand(HDNTBlock& block) {
        HDNTExpansion expansion(block);
        if (!applySettings(block, expansion)) return false;
        bool fine = false;
        try {
            const OutputToError redirect;
            const WarningsShown shown;
            fine = expansion.expand(settings_.deep);
        } catch (const HEXAll& error) {
            complain(block.getName() + ": " + error.what());
            return false;
        }
        if (expansion.levels().empty()) {
            complain(reasonForNone(block));
            return false;
        }
        write({expansion, properties_, settings_.connectedPins, places_, briefPlaces_});
        return fine;
    }

    // What is refused is said for all values and pins, not just for the first.
    bool applySettings(const HDNTBlock& block, HDNTExpansion& expansion) const {
        bool fine = true;
        const auto refuse = [&](const std::string& option, const std::string& reason, const std::string& hint) {
            complain(block.getName() + ": " + option + ": " + reason + hint);
            fine = false;
        };
        for (const auto& [name, value] : properties_) {
            std::string reason;
            if (expansion.setPropertyText(name, value, reason)) continue;
            const HDNTProperty* const property = block.getPropertyByName(name);
            refuse("--set " + joined({name, value}, "="), reason,
                   property ? hdnt::author::question(value, listedTexts(*property))
                            : sentence(name, propertyNames(block)));
        }
        for (const std::string& pin : settings_.connectedPins) {
            std::string reason;
            if (!expansion.connect(pin, reason)) refuse("--connect " + pin, reason, sentence(pin, pinNames(block)));
        }
        return fine;
    }

    static std::string reasonForNone(const HDNTBlock& block) {
        const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
        std::string text = "block '" + block.getName() + "' has no mapping";
        if (!architecture.empty()) return text + " for the architecture '" + architecture + "'";
        const std::string file = hdnt::author::mapLibraryOf(block);
        if (file.empty() || !HUTPathUtils::exists(file)) return text;
        return text + " that holds for every architecture; name one of those in " + file + " with --arch";
    }

    void write(const ExpandedBlock& expanded) {
        for (const HDNTExpansion::Problem& problem : expanded.expansion.problems())
            writeError(printable(describe(places_.placeOf(problem.location))) + ": " +
                       colored(Color::Red, "error:", 2) + " " + printable(problem.message) + "\n");
        if (settings_.expansionFormat == "json") {
            documents_.push_back(expansionJson(expanded));
            return;
        }
        text_ += (text_.empty() ? "" : "\n");
        text_ += settings_.expansionFormat == "dot" ? expansionDot(expanded.expansion) : expansionText(expanded);
    }

    const Settings& settings_;
    OpenedLibrary opened_;
    std::vector<std::pair<std::string, std::string>> properties_;
    hdnt::SourcePlaces places_;
    BriefPlaces briefPlaces_;
    Json documents_ = Json::array();
    std::string text_;
    int status_ = Fine;
};

} // namespace

int runExpand(const Settings& settings) {
    const bool hasNames = !settings.blocks.empty();
    if (hasNames == settings.allBlocks)
        throw Failure(Unusable, hasNames ? "BLOCK and --all exclude each other; see 'ntl expand --help'"
                                         : "BLOCK is required, or --all; see 'ntl expand --help'");
    if (settings.allBlocks && !(settings.propertyValues.empty() && settings.connectedPins.empty()))
        throw Failure(Unusable, "--all takes the defaults, without --set and --connect");
    enableByDefault(settings, "ntl.enableMapLib");
    return Expander(settings).run();
}

} // namespace ntl
