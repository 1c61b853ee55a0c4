// The two forms: the whole text of the printed one, and what only a program can bring about.
#include "tests/support/Capture.h"
#include "tests/support/Library.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

namespace {

using Exprs = std::vector<HDNTExpr*>;
using Pins = std::vector<HDNTPinInst*>;
using Statements = std::vector<HDNTNetlistEntity*>;
using Type = HATAttrTypes::AttrType;

std::string contents(const char* name) {
    std::ifstream stream(std::string(HDNT_WRITER_TESTS "/") + name, std::ios::binary);
    EXPECT_TRUE(stream) << name;
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::unique_ptr<HDNTLibrary> everyConstruct() {
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    return support::loaded(contents("every_construct.btl"));
}

HDNTExpr* number(int value) { return new HDNTIntConstant(value); }
HDNTExpr* operation(HDNTExpr* lhs, HDNTExpr::FOPERATOR op, HDNTExpr* rhs) { return new HDNTCompoundExpr(lhs, op, rhs); }

std::string textOf(HDNTExpr& expr) {
    return support::writtenBy([&](FILE* stream) {
        HDNTPrintVisitor visitor(stream);
        expr.accept(visitor);
        visitor.print();
    });
}

TEST(PrintedForm, IsThisText) {
    const auto library = everyConstruct();
    ASSERT_TRUE(library);
    EXPECT_EQ(support::printed(*library), contents("every_construct.printed"));
    const std::string toOutput = support::printedBy([&] { library->print(); }).out;
    EXPECT_EQ(toOutput, contents("every_construct.printed"));
    EXPECT_EQ(support::printed(*support::loaded("library \"%s\" { }")), "library \"%s\"\n{\n}\n");
}

// The ways that are taken for speed, held against the ways for any value.
TEST(PrintedForm, OfValuesIsThatOfOtherWays) {
    const auto shown = [](const std::string& declaration, const auto& expected) {
        const auto library = support::loaded("library \"L\" { block \"A\" { property " + declaration + " } }\n");
        const HDNTProperty& property = *library->getTypeBlock(0)->getProperty(0);
        const std::string text = support::printed(*library);
        EXPECT_NE(text.find("default = " + expected(property)), text.npos) << declaration << "\n" << text;
    };
    for (const std::string type : {"1'h", "4'h", "13'h", "64'h", "1'b", "5'b", "64'b"}) {
        for (const std::string digits : {"", "0", "1", "000", "0010", "10000000000000000", "aBcDeF09", "00F", "Ffff"}) {
            const bool isText = type.back() == 'b' && digits.find_first_not_of("01") != digits.npos;
            if (!isText)
                shown(type + " \"P\" { default = " + type + digits + " }", [](const HDNTProperty& property) {
                    const auto value = std::get<std::string>(property.getDefaultValue());
                    return property.formatValue(value, false) + " }";
                });
        }
    }
    for (const char* const number :
         {"0.0", "-0.0", "0.5", "1.5", "2.5", "-0.4", "0.000000499999999", "0.0000005", "123456.789", "0.125", "8.345",
          "999999999999999.5", "1234567890123456789.25", "-99.9999999"}) {
        for (const int precision : {0, 1, 2, 6, 9, 10, 20}) {
            char expected[80];
            std::snprintf(expected, sizeof expected, "%.*f, precision", precision, std::strtod(number, nullptr));
            shown("double \"P\" { default = " + std::string(number) + ", precision = " + std::to_string(precision) +
                      " }",
                  [&](const HDNTProperty&) { return std::string(expected); });
        }
    }
    const std::string most = support::printed(
        *support::loaded("library \"L\" { block \"A\" { property double \"P\" { default = 1.0, precision = 3 } } }\n"));
    char bounds[800];
    constexpr double greatest = std::numeric_limits<double>::max();
    std::snprintf(bounds, sizeof bounds, "{ min = %.3f, max = %.3f, ", -greatest, greatest);
    EXPECT_NE(most.find(bounds), most.npos) << most;
}

// Both directions in a host whose numbers have a decimal comma.
TEST(PrintedForm, IsTheSameInAnyLocale) {
    setenv("LOCPATH", HDNT_TEST_LOCALES, 1);
    ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
    char probe[8];
    std::snprintf(probe, sizeof probe, "%.1f", 0.5);
    ASSERT_STREQ(probe, "0,5");
    const auto library = everyConstruct();
    ASSERT_TRUE(library);
    EXPECT_EQ(support::printed(*library), contents("every_construct.printed"));
    const std::string text = support::source(*library);
    EXPECT_NE(text.find("min = 0.0, max = 1.0, default = 0.5"), text.npos);
    EXPECT_EQ(support::source(*support::loaded(text)), text);
}

TEST(PrintedForm, ShowsTheBlocksOfParentsTheSourceDoesNot) {
    const auto parent = support::loaded("library \"P\" { block \"ADD\" { } }");
    const auto child = support::loaded("library \"C\" { block \"SUM\" { } }", parent.get());
    EXPECT_NE(support::printed(*child).find("\"ADD\""), std::string::npos);
    EXPECT_EQ(support::source(*child).find("\"ADD\""), std::string::npos);
}

TEST(PrintedForm, IsInTheStreamWhenAnOperationReturns) {
    const auto library = everyConstruct();
    HDNTBlock& block = *library->getTypeBlock(0);
    const std::string walked = support::writtenBy([&](FILE* stream) {
        HDNTPrintVisitor visitor(stream);
        library->accept(visitor);
    });
    EXPECT_EQ(walked, contents("every_construct.printed"));
    support::writtenBy([&](FILE* stream) {
        HDNTPrintVisitor visitor(stream);
        visitor.visit(&block);
        const long begun = std::ftell(stream);
        visitor.visit(block.getBus(0));
        const long bus = std::ftell(stream);
        visitor.postVisit(block.getBus(0));
        EXPECT_GT(begun, 0);
        EXPECT_GT(bus, begun);
        EXPECT_EQ(std::ftell(stream), bus + 2);
    });
}

TEST(PrintedForm, WritesWhatIsVisitedOnItsOwn) {
    const auto library = everyConstruct();
    HDNTBlock& block = *library->getTypeBlock(0);
    const auto text = [](auto& node) {
        return support::writtenBy([&](FILE* stream) {
            HDNTPrintVisitor visitor(stream);
            node.accept(visitor);
        });
    };
    EXPECT_EQ(text(*block.getPin(1)), " pin \"B\" input test abstract clock active;\n");
    EXPECT_EQ(text(*block.getPin(3)), " pin \"D[7]\" input enable tieLow;\n");
    EXPECT_EQ(text(*block.getBus(3)), " pin \"D[7:0]\" input enable tieLow;\n");
    EXPECT_EQ(support::printedBy([&] { block.getProperty(6)->print(); }).out,
              "    property bool \"OFF\" { default = false }\n");
    HDNTPrintVisitor visitor;
    EXPECT_EQ(support::printedBy([&] {
                  visitor.joinWith("; ");
                  visitor.addQuotedString("a%d");
                  visitor.joinWith("; ");
                  visitor.printIndent();
                  visitor.print();
                  visitor.print();
              }).out,
              " \"a%d\"; ");
}

// What no text has: an operator `!`, which the scanner does not know, and damaged trees.
TEST(PrintedForm, OfExpressionsThatProgramsMake) {
    const auto negation = [](HDNTExpr* of) { return operation(nullptr, HDNTExpr::NOT, of); };
    const struct {
        std::unique_ptr<HDNTExpr> expr;
        const char* text;
    } cases[] = {
        {std::unique_ptr<HDNTExpr>(negation(new HDNTBoolConstant(true))), "true == false"},
        {std::unique_ptr<HDNTExpr>(negation(operation(number(1), HDNTExpr::LESS, number(2)))), "1 < 2 == false"},
        {std::unique_ptr<HDNTExpr>(negation(operation(number(1), HDNTExpr::EQUAL, number(2)))), "1 == 2 == false"},
        {std::unique_ptr<HDNTExpr>(negation(operation(number(1), HDNTExpr::OR, number(2)))), "(1 || 2) == false"},
        {std::unique_ptr<HDNTExpr>(negation(operation(number(1), HDNTExpr::ADD, number(2)))), "1 + 2 == 0"},
        {std::unique_ptr<HDNTExpr>(negation(new HDNTDoubleConstant(0.5))), "0.500000 == 0.0"},
        {std::unique_ptr<HDNTExpr>(operation(negation(number(1)), HDNTExpr::ADD, negation(number(2)))),
         "(1 == 0) + (2 == 0)"},
        {std::unique_ptr<HDNTExpr>(new HDNTFunctionCall(
             "f",
             new Exprs{number(1), operation(nullptr, HDNTExpr::NEGATE, number(2)),
                       new HDNTFunctionCall("g", new Exprs{number(3), number(4)}),
                       operation(operation(number(5), HDNTExpr::SUBTRACT, number(6)), HDNTExpr::DIVIDE, number(7))})),
         "f(1, -(2), g(3, 4), (5 - 6) / 7)"},
        {std::unique_ptr<HDNTExpr>(operation(number(1), HDNTExpr::ADD, nullptr)), "1 + "},
    };
    for (const auto& [expr, text] : cases) EXPECT_EQ(textOf(*expr), text);
}

// Three that write integers, and pins of instances, in their own way.
class Quoting : public HDNTPrintVisitor {
public:
    using HDNTPrintVisitor::HDNTPrintVisitor;
    using HDNTPrintVisitor::visit;
    void visit(HDNTIntConstant* constant) override { add(std::to_string(constant->getValue())); }
    void visit(HDNTBlockPinName* pin) override {
        if (pin->instName().empty()) HDNTPrintVisitor::visit(pin);
        else add(pin->instName() + '.' + pin->pinName());
    }
    virtual void add(const std::string& text) {
        joinWith(", ");
        addQuotedString(text);
    }
};
class QuotingWithoutSeparators : public Quoting {
public:
    using Quoting::Quoting;
    void add(const std::string& text) override { addQuotedString(text); }
};
class WritingAtOnce : public Quoting {
public:
    using Quoting::Quoting;
    void add(const std::string& text) override {
        Quoting::add(text);
        print();
    }
};

template <typename Visitor>
std::string lineBy(HDNTNetlistEntity& entity) {
    const std::string text = support::writtenBy([&](FILE* stream) {
        Visitor visitor(stream);
        entity.accept(visitor);
        visitor.print();
    });
    return text.substr(0, text.find('\n'));
}

TEST(PrintedForm, OfOperandsThatDerivedVisitorsWrite) {
    using Entity = std::unique_ptr<HDNTNetlistEntity>;
    auto* const pins =
        new Pins{new HDNTBlockPinName("U", "A"), new HDNTBlockPinName("", "B"), new HDNTBlockPinName("U", "C")};
    const struct {
        Entity entity;
        const char* quoting;
        const char* withoutSeparators;
        const char* atOnce;
    } cases[] = {
        {Entity(operation(operation(number(1), HDNTExpr::SUBTRACT, number(2)), HDNTExpr::MULTIPLY,
                          operation(number(3), HDNTExpr::DIVIDE, operation(nullptr, HDNTExpr::NEGATE, number(4))))),
         R"-(("1" - "2") * ("3" / -("4")))-", R"-(("1" - "2") * ("3" / -("4")))-", R"-("1" - "2" * "3" / -("4"))-"},
        {Entity(operation(
             operation(number(1), HDNTExpr::LESS, number(2)), HDNTExpr::AND,
             operation(new HDNTBoolConstant(true), HDNTExpr::OR, operation(nullptr, HDNTExpr::NOT, number(3))))),
         R"-("1" < "2" && (true || "3" == 0))-", R"-("1" < "2" && (true || "3" == 0))-",
         R"-("1" < "2" && true || "3" == 0)-"},
        {Entity(new HDNTFunctionCall("f",
                                     new Exprs{number(1), new HDNTBoolConstant(true),
                                               new HDNTFunctionCall("g", new Exprs{number(2)}), number(3), number(4)})),
         R"-(f("1", true, g("2"), "3", "4"))-", R"-(f("1", true, g("2")"3""4"))-", R"-(f("1"true, g("2"), "3""4"))-"},
        {Entity(new HDNTConnect("N", pins)), R"-( connect "N" : "U.A", "" "B", "U.C";)-",
         R"-( connect "N" : "U.A", "" "B""U.C";)-", R"-( connect "N" : "U.A""" "B", "U.C";)-"},
    };
    for (const auto& [entity, quoting, withoutSeparators, atOnce] : cases) {
        EXPECT_EQ(lineBy<Quoting>(*entity), quoting);
        EXPECT_EQ(lineBy<QuotingWithoutSeparators>(*entity), withoutSeparators);
        EXPECT_EQ(lineBy<WritingAtOnce>(*entity), atOnce);
    }
}

TEST(PrintedForm, HelpersAndOperationsJoinEachOthersText) {
    HDNTIntConstant five(5);
    HDNTFunctionCall call("f", nullptr);
    EXPECT_EQ(support::writtenBy([&](FILE* stream) {
                  HDNTPrintVisitor visitor(stream);
                  visitor.joinWith("; ");
                  visitor.addQuotedString("a");
                  visitor.visit(&five);
                  visitor.joinWith("; ");
                  visitor.addQuotedString("b");
                  call.accept(visitor);
                  visitor.visit(&five);
                  visitor.print();
                  visitor.visit(&five);
                  visitor.print();
              }),
              "\"a\", 5; \"b\", f(), 55");
}

HDNTIfStmt* ifStmt(HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt) {
    return new HDNTIfStmt(new HDNTBoolConstant(true), thenStmt, elseStmt);
}
HDNTBlockInst* inst(const char* name) { return new HDNTBlockInst(name, "ADD"); }
HDNTStmtBlock* disabled() {
    auto* const block = new HDNTStmtBlock(nullptr);
    block->setEnabled(false);
    return block;
}

HDNTFunctionCall* statementCall() {
    auto* const call = new HDNTFunctionCall("f", nullptr);
    call->setStatement(true);
    return call;
}

std::string writtenNetlist(HDNTNetlistEntity* statement, std::vector<std::string>* problems) {
    const auto library = support::loaded("library \"L\" { block \"ADD\" { } }");
    Statements statements{statement};
    library->getTypeBlock(0)->setNetlist(new HDNTNetlist(&statements));
    return support::writtenBy(
        [&](FILE* stream) { problems ? (void)library->printSource(stream, problems) : library->print(stream); });
}

TEST(PrintedForm, OfBranchesThatProgramsMakeReadsBack) {
    const auto text = [](HDNTNetlistEntity* statement) {
        const std::string all = writtenNetlist(statement, nullptr);
        EXPECT_TRUE(support::parsed(all)) << all;
        return all.substr(all.find("if ("), all.rfind("  }\n") - all.find("if ("));
    };
    EXPECT_EQ(
        text(ifStmt(ifStmt(inst("A"), nullptr), inst("B"))),
        "if (true) \n    {\n      if (true) \n      inst \"A\" \"ADD\";\n    }\n    else\n    inst \"B\" \"ADD\";\n");
    EXPECT_EQ(text(ifStmt(disabled(), disabled())), "if (true) \n    { }\n    else\n    { }\n");
}

TEST(SourceForm, NamesStatementsThatNoTextHas) {
    auto* const bare = new Statements{number(1)};
    const struct {
        HDNTNetlistEntity* statement;
        const char* problem;
    } cases[] = {
        {ifStmt(ifStmt(inst("A"), nullptr), inst("B")),
         "if statement: cannot write an if statement without \"else\" as the branch of one that has it"},
        {ifStmt(disabled(), nullptr),
         "if statement: cannot write a statement that is missing, or a statement block that is not enabled"},
        {ifStmt(new HDNTStmtBlock(bare), nullptr),
         "statement block: cannot write an expression that stands as a statement"},
        {new HDNTBlockInst("a\"b", "ADD"),
         "instance \"a\"b\": cannot write the text \"a\"b\", which holds a quote or a line break"},
        {new HDNTConnect("N", new Pins), "connection of signal \"N\": cannot write a list of pins that is empty"},
        {new HDNTSignal("N", new Pins), "connection of signal \"N\": cannot write a list of pins that is empty"},
        {new HDNTAssignPinProperty("U", "~Q", "P", number(1)),
         "assignment to \"P\": cannot write a pin name that begins with \"~\""},
        {new HDNTAssignBlockProperty("U", "P", nullptr),
         "assignment to \"P\": cannot write an assignment without a value"},
        {new HDNTAssignBlockProperty("U", "P", new HDNTDoubleConstant(std::nan(""))),
         "assignment to \"P\": cannot write a number that is none (NaN)"},
        {new HDNTAssignBlockProperty("U", "P", operation(number(1), HDNTExpr::ADD, nullptr)),
         "assignment to \"P\": cannot write an operation that is not complete"},
        {new HDNTSignal("D[3]", nullptr),
         "signal \"D[3]\": cannot write a single signal without pins whose name has brackets, which would be a list"},
        {new HDNTAssignBlockProperty("U", "P", statementCall()),
         "assignment to \"P\": cannot write a call as an operand that is marked as a statement"},
        {new HDNTAssignBlockProperty("U", "P", operation(nullptr, HDNTExpr::NOT, new HDNTStringConstant("x"))),
         "assignment to \"P\": cannot write the negation of an expression whose type is not known"},
        {new HDNTAssignBlockProperty("U", "P", new HDNTFunctionCall("if", nullptr)),
         "assignment to \"P\": cannot write the function name \"if\", which is no identifier of fewer than 32 "
         "characters"},
    };
    for (const auto& [statement, problem] : cases) {
        std::vector<std::string> problems;
        writtenNetlist(statement, &problems);
        EXPECT_EQ(problems, support::Texts{std::string("block \"ADD\", ") + problem});
    }
}

TEST(SourceForm, NamesDeclarationsThatNoTextHas) {
    const auto property = [](Type type, const std::function<void(HDNTProperty&)>& change) {
        auto* const made = new HDNTProperty("P", type, false, false, false, false, "");
        change(*made);
        return made;
    };
    const struct {
        HDNTProperty* property;
        const char* problem;
    } cases[] = {
        {property(Type::TypeInt, [](HDNTProperty& p) { p.getAttrSpec()->setDiscreteInt(true); }),
         "a list of allowed values that is empty"},
        {property(Type::TypeBool,
                  [](HDNTProperty& p) {
                      p.getAttrSpec()->setHasUnit(true);
                      p.getAttrSpec()->setUnitDefault("ns");
                  }),
         "units, which its type does not have"},
        {new HDNTProperty("P", Type::TypeString, false, false, false, false, "ns"),
         "units, which its type does not have"},
        {property(Type::TypeBitHex, [](HDNTProperty& p) { p.setBitWidth(-1); }), "a width of -1 bits"},
        {property(Type::TypeBitHex, [](HDNTProperty& p) { p.getAttrSpec()->setHexDefault("FF"); }),
         "the value \"FF\", which is no constant of its type"},
        {property(Type::TypeBitBinary, [](HDNTProperty& p) { p.getAttrSpec()->addDiscreteBinary("1'b1"); }),
         "a list of allowed values without a default"},
        {property(Type::TypeDouble, [](HDNTProperty& p) { p.setPrecision(101); }), "a precision of 101"},
        {property(Type::TypeString, [](HDNTProperty& p) { p.getAttrSpec()->setDescription("two\nlines"); }),
         "the text \"two\nlines\", which holds a quote or a line break"},
    };
    for (const auto& [made, problem] : cases) {
        HDNTLibrary library(nullptr);
        std::vector<HDNTBlockEntity*> entities{made};
        std::vector<HDNTDecl*> decls{new HDNTBlock("ADD", &entities, nullptr, &library)};
        library.init("L", &decls);
        library.getTypeBlock(0)->setPrimGroupType("G:H");
        std::vector<std::string> problems;
        EXPECT_FALSE([&] {
            bool complete = true;
            support::writtenBy([&](FILE* stream) { complete = library.printSource(stream, &problems); });
            return complete;
        }());
        EXPECT_EQ(problems, (support::Texts{"block \"ADD\", declaration: cannot write its primitive group",
                                            std::string("block \"ADD\", property \"P\": cannot write ") + problem}));
    }
}

// Each form of nesting, from less than the reader takes to more: what is written reads back, or it is refused.
TEST(SourceForm, IsRefusedWhereItNestsTooDeep) {
    HDNTLimits limits = HDNTLimits::get();
    limits.parserDepth = 300;
    HDNTLimits::set(limits);
    const auto repeat = [](const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) all += text;
        return all;
    };
    const struct {
        const char* before;
        const char* opening;
        const char* middle;
        const char* closing;
        const char* behind;
        bool isEverRefused; ///< the form is deeper than its text
    } cases[] = {
        {"assign block property \"U\" \"P\" ", "- ", "f(1)", "", ";", true},
        {"assign pin property \"U\" \"I\", \"P\" ", "- ", "f(1)", "", ";", true},
        {"assign block property \"U\" \"P\" ", "-(1 + ", "2", ")", ";", false},
        {"assign block property \"U\" \"P\" ", "2 - (", "1 + 1", ")", ";", false},
        {"assign block property \"U\" \"P\" ", "(", "1", ")", ";", false},
        {"if (1 < 2) f(1); else if (", "- ", "f(1)", "", " == 1) f(2);", true},
        {"if (1 < 2) { f(1, ", "f(", "2, f()", ")", "); }", false},
        {"f(", "f(1, - -", "2", ", 3)", ");", true},
        {"", "if (1 < 2) { ", "f(- - - - - - - - - -1);", "}", "", true},
        {"", "if (1 < 2) f(1); else ", "if (- - - - - - -1 < 0) { }", "", "", true},
    };
    for (const auto& [before, opening, middle, closing, behind, isEverRefused] : cases) {
        SCOPED_TRACE(opening);
        bool isWritten[2] = {};
        for (int times = 1; times < 300; ++times) {
            const auto library =
                support::loaded("library \"L\" { block \"ADD\" { } mapsto { " + (before + repeat(opening, times)) +
                                middle + repeat(closing, times) + behind + " } }");
            if (!library) break;
            bool isComplete = false;
            const std::string text =
                support::writtenBy([&](FILE* stream) { isComplete = library->printSource(stream, nullptr); });
            ASSERT_EQ(isComplete, support::loaded(text) != nullptr) << times;
            isWritten[isComplete ? 1 : 0] = true;
        }
        EXPECT_TRUE(isWritten[1]);
        EXPECT_EQ(isWritten[0], isEverRefused);
    }
}

// In a thread with a stack of one megabyte: chains are long, and parentheses and statements deep.
TEST(BothForms, WriteWhatIsDeep) {
    const auto run = [](void*) -> void* {
        std::string sum = "1";
        for (int i = 0; i < 300000; ++i) sum += " + 1";
        std::string nested;
        for (int i = 0; i < 1000; ++i) nested += i % 2 ? "2 - (" : "(3 * ";
        nested += "1";
        nested += std::string(1000, ')');
        std::string ifs;
        for (int i = 0; i < 600; ++i) ifs += "if (true) { ";
        ifs += std::string(600, '}');
        const auto library =
            support::loaded("library \"L\" { block \"ADD\" { } mapsto { assign block property \"U\" \"P\" " + sum +
                            "; assign block property \"U\" \"P\" " + nested + "; " + ifs + " } }");
        EXPECT_NE(library, nullptr) << HDNTError::numErrors;
        if (!library) return nullptr;
        const std::string text = support::source(*library);
        EXPECT_NE(text.find(sum), text.npos);
        EXPECT_NE(text.rfind("\"U\" \"P\" "), text.find("\"U\" \"P\" "));
        EXPECT_EQ(support::source(*support::loaded(text)), text);
        EXPECT_NE(support::printed(*library).find(sum), text.npos);
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 1 << 20);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, nullptr), 0);
    pthread_join(thread, nullptr);
}

} // namespace
