#include "author/lint/lint.h"

#include "author/lint/Findings.internal.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"

#include <libconfig.h++>

#include <set>
#include <string_view>
#include <tuple>

namespace hdnt {

namespace {

using namespace author;

/// While it lives, what the library notices is a finding.
class NoticesFound : private HDNTErrorListener {
public:
    explicit NoticesFound(Findings& findings) : findings_(findings), before_(HDNTError::setListener(this)) {}
    ~NoticesFound() override { HDNTError::setListener(before_); }
    NoticesFound(const NoticesFound&) = delete;
    NoticesFound& operator=(const NoticesFound&) = delete;

private:
    bool report(const HDNTReport& report) override {
        findings_.list.push_back(diagnosticOf(report));
        return true;
    }
    void notice(const HDNTNotice& notice) override {
        const Diagnostic said = diagnosticOf(notice);
        if (said.severity == Severity::warning) findings_.list.push_back(said);
    }
    bool silencesOutput() const override { return true; }

    Findings& findings_;
    HDNTErrorListener* before_;
};

/// Judges the mappings of a library, one after the other.
class MappingJudge {
public:
    MappingJudge(const HDNTLibrary& library, const LintOptions& options, Findings& findings)
        : library_(library), options_(options), findings_(findings), finder_(const_cast<HDNTLibrary*>(&library)) {}

    void judge() {
        if (options_.isThorough && HDNTLibrary::usesMapLibraries())
            architectures_ = options_.architectures ? *options_.architectures : architecturesIn(*library_.getConfig());
        const std::size_t all = library_.blocks().size();
        for (std::size_t i = 0; i < all; ++i) {
            HDNTBlock& block = *library_.getTypeBlock(i);
            if (block.hasOwnNetlist()) judge(block, *block.getAttachedNetlist(), {});
            else judgeMapLibraries(block);
            if (options_.progress) options_.progress(i + 1, all);
        }
        graph_.reportCircles(findings_);
    }

private:
    void judge(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture) {
        judgeReferences(block, netlist, architecture, finder_, findings_);
        if (options_.isThorough) judgeByTrying(block, netlist, architecture, options_.budget, findings_, graph_);
    }

    // One without sections for architectures holds for all.
    void judgeMapLibraries(HDNTBlock& block) {
        for (const std::string& architecture : architectures_) {
            try {
                const NoticesFound found(findings_);
                const HDNTNetlist* const netlist = block.getNetlist(architecture);
                const bool isForAll = block.getNetlistKind() == HDNTBlock::AnyArchitecture;
                if (netlist) judge(block, *netlist, isForAll ? std::string() : architecture);
                if (isForAll) return;
            } catch (const HEXAll& error) {
                findings_.add(LintCode::brokenMapLibrary, block, {block.getName(), architecture, error.what()});
            }
        }
    }

    const HDNTLibrary& library_;
    const LintOptions& options_;
    Findings& findings_;
    BlockFinder finder_;
    MappingGraph graph_;
    std::vector<std::string> architectures_;
};

// A section for several architectures is read and judged for each.
void dropRepeated(std::vector<Diagnostic>& list) {
    std::set<std::tuple<std::string_view, int, int, std::string_view, std::string_view>> seen;
    std::vector<bool> isRepeated;
    isRepeated.reserve(list.size());
    for (const Diagnostic& one : list)
        isRepeated.push_back(
            !seen.emplace(one.place.file, one.place.line, one.place.column, one.code, one.message).second);
    std::size_t next = 0;
    std::erase_if(list, [&](const Diagnostic&) { return isRepeated[next++]; });
}

/// Reports of map libraries are findings here; whoever loads next must not take them for its own.
class CountKept {
public:
    CountKept() = default;
    ~CountKept() { HDNTError::numErrors = before_; }
    CountKept(const CountKept&) = delete;
    CountKept& operator=(const CountKept&) = delete;

private:
    int before_ = HDNTError::numErrors;
};

} // namespace

std::vector<Diagnostic> lint(const HDNTLibrary& library, const LintOptions& options) {
    const CountKept kept;
    Findings findings(options.texts);
    judgeDeclarations(library, findings);
    if (options.isThorough) {
        for (const HDNTBlock& block : library.blocks()) judgeNames(block, findings);
        judgeGroups(library, findings);
    }
    MappingJudge(library, options, findings).judge();
    sortByPlace(findings.list);
    dropRepeated(findings.list);
    return std::move(findings.list);
}

namespace author {

std::vector<std::string> architecturesIn(ConfigBase& config) {
    const HCTLock lock(config.mutex());
    std::vector<std::string> names;
    const libconfig::Setting* const listed = config.lookup("ARCHITECTURES");
    for (int i = 0; listed && listed->isGroup() && i < listed->getLength(); ++i)
        names.emplace_back((*listed)[i].getName());
    return names;
}

} // namespace author
} // namespace hdnt
