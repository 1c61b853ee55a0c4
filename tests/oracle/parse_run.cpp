// Parses files and mutants of a text, and writes a line for each: all that a host can see of the parse. Linked once
// with the library's parser and once with the generated one, which is the law; both have to write the same.
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/HDNTVisitor.h"
#include "tests/support/Mutant.h"
#include "tests/support/Written.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::string textOf(const yyltype& at) {
    return std::string(at.fileName ? at.fileName : "") + ":" + std::to_string(at.fileLine) + "/" +
           std::to_string(at.first_line) + ":" + std::to_string(at.first_column) + "-" +
           std::to_string(at.last_column) + "+" + std::to_string(at.storeOffset);
}

/// What is said, in the order of saying.
class Said : public HDNTErrorListener {
public:
    Said() : before_(HDNTError::setListener(this)) {}
    ~Said() override { HDNTError::setListener(before_); }
    bool report(const HDNTReport& report) override {
        text += "|" + std::string(report.message) + "@" + (report.location ? textOf(*report.location) : "");
        return true;
    }
    void notice(const HDNTNotice& notice) override {
        text += "|" + std::to_string(static_cast<int>(notice.kind)) + " " + std::string(notice.text) + " " +
                std::string(notice.detail) + "@" + textOf(notice.location);
    }
    bool silencesOutput() const override { return true; }
    std::string text;

private:
    HDNTErrorListener* before_;
};

/// The places of all nodes, in the order of the walk.
class Places : public HDNTVisitor {
public:
    void visit(HDNTLibrary* node) override { add(*node); }
    void visit(HDNTFunctionDecl* node) override { add(*node); }
    void visit(HDNTBlock* node) override { add(*node); }
    void visit(HDNTBlockInst* node) override { add(*node); }
    void visit(HDNTPin* node) override { add(*node); }
    void visit(HDNTBus* node) override { add(*node); }
    void visit(HDNTProperty* node) override { add(*node); }
    void visit(HDNTSignal* node) override { add(*node); }
    void visit(HDNTConnect* node) override { add(*node); }
    void visit(HDNTAssignBlockProperty* node) override { add(*node); }
    void visit(HDNTAssignPinProperty* node) override { add(*node); }
    void visit(HDNTNetlist* node) override { add(*node); }
    void visit(HDNTBlockPinName* node) override { add(*node); }
    void visit(HDNTStmtBlock* node) override { add(*node); }
    void visit(HDNTIfStmt* node) override { add(*node); }
    void visit(HDNTFunctionCall* node) override { add(*node); }
    void visit(HDNTCompoundExpr* node) override { add(*node); }
    void visit(HDNTIntConstant* node) override { add(*node); }
    void visit(HDNTDoubleConstant* node) override { add(*node); }
    void visit(HDNTBoolConstant* node) override { add(*node); }
    void visit(HDNTStringConstant* node) override { add(*node); }
    std::string text;

private:
    void add(const HDNTNode& node) {
        text += std::to_string(static_cast<int>(node.getKind()));
        if (const yyltype* const at = node.getLocation()) text += textOf(*at);
        text += ' ';
    }
};

std::string readable(std::string text) {
    std::replace(text.begin(), text.end(), '\n', '\\');
    return text;
}

void run(const std::string& text, int depth) {
    static HDNTLibrary root(nullptr); // each root library would read the configuration
    HDNTLimits limits;
    limits.parserDepth = depth;
    const HDNTLimits::Scope scope(limits);
    NtlFreeScannerMem();
    Said said;
    HDNTLibrary library(&root);
    const int errors = HDNTParsernerrs;
    std::string outcome;
    try {
        outcome = std::to_string(library.parseString(text));
    } catch (const std::exception& error) {
        outcome = error.what();
    }
    std::printf("%s %d %d %s %s", outcome.c_str(), HDNTParsernerrs - errors, HDNTParserchar,
                textOf(HDNTParserlloc).c_str(), readable(said.text).c_str());
    if (outcome == "0") {
        Places places;
        library.acceptOwn(places);
        std::printf(" # %s %s", places.text.c_str(), readable(support::printed(library)).c_str());
    }
    std::puts("");
}

std::vector<std::string> textsIn(const std::string& folder) {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".btl") continue;
        std::ifstream file(entry.path(), std::ios::binary);
        texts.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

/// Mappings that nest, to be parsed with little room.
std::string nested(std::mt19937& random) {
    const char* const begins[] = {"{ ", "if (f()) ", "if (f()) inst \"a\" \"B\"; else ",
                                  "{ signal \"s\" : \"A\", \"b\" \"B\"; ", "assign block property \"i\" \"P\" "};
    const char* const operands[] = {"(", "-", "f(", "f(1, ", "1 + ", "1 < (", "2 * ", "f() && "};
    std::string text = "library \"L\" { block \"A\" { } mapsto { ";
    const std::size_t length = 60 + random() % 300;
    for (std::size_t i = 0; i < length; ++i) text += begins[random() % 4];
    text += begins[4];
    for (std::size_t i = random() % 200; i > 0; --i) text += operands[random() % 8];
    return text + "1";
}

} // namespace

// parse_run COUNT SEED [FOLDER...]
int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const int depths[] = {4000, 200, 240, 400};
    for (int i = 3; i < argc; ++i)
        for (const std::string& text : textsIn(argv[i])) run(text, depths[0]);
    std::mt19937 random(static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)));
    const support::Tokens tokens = support::tokensOf(support::everything);
    const unsigned long count = std::strtoul(argv[1], nullptr, 10);
    for (unsigned long i = 0; i < count; ++i) {
        const bool deep = i % 8 == 0;
        run(deep ? nested(random) : support::mutant(tokens, random), depths[deep ? random() % 4 : 0]);
    }
    return 0;
}
