// What mappings cost once they are loaded: evaluation of expressions, expansion.
#include "bench/Libraries.h"
#include "bench/Subject.h"

namespace bench {

namespace {

template <typename Constant, typename Value>
HDNTFunctionTable::Fn always(Value value) {
    return [value](const HDNTFunctionCall&, const std::vector<const HDNTValue*>&) -> std::unique_ptr<HDNTValue> {
        return std::make_unique<Constant>(value);
    };
}

/// What a host supplies; the functions that read properties are asked only when no block is being mapped.
void supplyFunctions() {
    HDNTFunctionTable& table = HDNTFunctionTable::global();
    table.add("intProperty", always<HDNTIntConstant>(7));
    table.add("doubleProperty", always<HDNTDoubleConstant>(0.5));
    table.add("boolProperty", always<HDNTBoolConstant>(true));
    table.add("stringProperty", always<HDNTStringConstant>(std::string("NONE")));
    table.add("isConnected", always<HDNTBoolConstant>(true));
    table.add("familyCode", always<HDNTStringConstant>(std::string("NORTH")));
    table.add("steps", always<HDNTIntConstant>(3));
    table.add("reserveColumn", always<HDNTBoolConstant>(true));
    table.add("makePair", always<HDNTBoolConstant>(true));
}

/// One sum of that many terms: the time a term must not depend on the length.
Work evaluateSum(int terms) {
    std::string text = "library \"L\" { block \"HOLD\" { } mapsto { if (1";
    for (int i = 0; i < terms; ++i) text += " + 1";
    auto library = std::make_shared<LibraryPointer>(loadText(text + " == 1) { } } }"));
    HDNTExpr* const condition = (*library)->getTypeBlock(0)->getNetlist()->ifStmts().at(0)->condition();
    return {.run = [library, condition] { condition->evaluate(); }, .items = static_cast<size_t>(terms)};
}

/// The conditions of all mappings, once each.
Work evaluateConditions(const Corpus& corpus) {
    supplyFunctions();
    auto library = std::make_shared<LibraryPointer>(loadFile(corpus.path("btl")));
    std::vector<HDNTExpr*> conditions;
    for (size_t b = 0; b < (*library)->getNumTypeBlocks(false); ++b)
        if (const HDNTNetlist* const netlist = (*library)->getTypeBlock(b)->getAttachedNetlist())
            for (const HDNTIfStmt* const statement : netlist->ifStmts()) conditions.push_back(statement->condition());
    return {.run =
                [library, conditions] {
                    for (HDNTExpr* const condition : conditions) condition->evaluate();
                },
            .items = conditions.size()};
}

/// All mappings with the default values.
Work expandMappings(const Corpus& corpus) {
    supplyFunctions();
    auto library = std::make_shared<LibraryPointer>(loadFile(corpus.path("btl")));
    std::vector<HDNTBlock*> mapped;
    for (size_t b = 0; b < (*library)->getNumTypeBlocks(false); ++b)
        if (HDNTBlock* const block = (*library)->getTypeBlock(b); block->hasOwnNetlist()) mapped.push_back(block);
    return {.run =
                [library, mapped] {
                    for (HDNTBlock* const block : mapped) {
                        HDNTExpansion expansion(*block);
                        if (!expansion.expand()) fail(block->getName() + ": " + expansion.problems().at(0).message);
                    }
                },
            .items = mapped.size()};
}

/// A mapping of the shipped library down to what has no mapping.
Work expandDeep(const Corpus&) {
    HDNTBlock* const block = HDNTLibraryMgr::getCommonLibrary()->getTypeBlockByName("ADD_CHAIN_16", true);
    return {.run =
                [block] {
                    if (HDNTExpansion expansion(*block); !expansion.expand(true)) fail("cannot expand ADD_CHAIN_16");
                },
            .items = 1};
}

} // namespace

void addNetlistSubjects(std::vector<Subject>& subjects) {
    for (const int terms : {3000, 30000, 300000})
        subjects.push_back({"evaluate_sum_" + std::to_string(terms), Subject::Sizes::One,
                            [=](const Corpus&) { return evaluateSum(terms); }});
    subjects.push_back({"evaluate", Subject::Sizes::UpToTen, evaluateConditions});
    subjects.push_back({"expand", Subject::Sizes::UpToTen, expandMappings});
    subjects.push_back({"expand_deep", Subject::Sizes::One, expandDeep});
}

} // namespace bench
