#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using Op = HDNTExpr::FOPERATOR;
using support::Reports;
using support::Texts;

template <typename T>
static std::string operated(T a, Op op, T b) {
    const HDNTCompoundExpr expr(nullptr, op, nullptr);
    try {
        const std::unique_ptr<HDNTValue> value(expr.operate(a, b));
        if (value->exprType() == HATAttrTypes::TypeBool) return HDNTValue::getBoolValue(value.get()) ? "true" : "false";
        if (value->exprType() == HATAttrTypes::TypeInt) return std::to_string(HDNTValue::getIntValue(value.get()));
        return HDNTExpansion::textOf(HDNTValue::getDoubleValue(value.get()));
    } catch (const HEXAlgException& e) {
        return e.what();
    }
}

static const Op beyond = static_cast<Op>(15);

TEST(Expr, IntOperators) {
    const struct {
        int a;
        Op op;
        int b;
        const char* result;
    } cases[] = {
        {7, HDNTExpr::DIVIDE, 2, "3"},
        {-7, HDNTExpr::DIVIDE, 2, "-3"},
        {-7, HDNTExpr::REMAINDER, 2, "-1"},
        {7, HDNTExpr::REMAINDER, -2, "1"},
        {1, HDNTExpr::DIVIDE, 0, "Divide by zero"},
        {1, HDNTExpr::REMAINDER, 0, "Modulo zero"},
        {INT_MIN, HDNTExpr::DIVIDE, -1, "-2147483648"},
        {INT_MIN, HDNTExpr::REMAINDER, -1, "0"},
        {INT_MAX, HDNTExpr::ADD, 1, "-2147483648"},
        {INT_MIN, HDNTExpr::SUBTRACT, 1, "2147483647"},
        {0, HDNTExpr::NEGATE, INT_MIN, "-2147483648"},
        {65536, HDNTExpr::MULTIPLY, 65536, "0"},
        {2, HDNTExpr::AND, 0, "false"},
        {2, HDNTExpr::OR, 0, "true"},
        {9, HDNTExpr::NOT, 0, "true"},
        {2, HDNTExpr::GREATER, 1, "true"},
        {2, HDNTExpr::LESS_EQUAL, 1, "false"},
        {2, HDNTExpr::NOT_EQUAL, 1, "true"},
        {2, beyond, 1, "HDNTNetlist: Operator not supported"},
    };
    for (const auto& [a, op, b, result] : cases) EXPECT_EQ(operated(a, op, b), result) << a << ' ' << op << ' ' << b;
}

TEST(Expr, OperatorsOfOtherTypes) {
    EXPECT_EQ(operated(1.0, HDNTExpr::DIVIDE, 0.0), "Divide by zero");
    EXPECT_EQ(operated(1.0, HDNTExpr::DIVIDE, 4.0), "0.25");
    EXPECT_EQ(operated(1.0, HDNTExpr::ADD, 4.0) + operated(1.0, HDNTExpr::SUBTRACT, 4.0), "5.0-3.0");
    EXPECT_EQ(operated(1.5, HDNTExpr::MULTIPLY, 4.0) + operated(1.5, HDNTExpr::NEGATE, 4.0), "6.0-4.0");
    EXPECT_EQ(operated(5.0, HDNTExpr::REMAINDER, 2.0), "HDNTNetlist: illegal modulo operation for type double");
    const double nan = std::nan("");
    EXPECT_EQ(operated(nan, HDNTExpr::EQUAL, nan) + operated(nan, HDNTExpr::NOT_EQUAL, nan), "falsetrue");
    EXPECT_EQ(operated(nan, HDNTExpr::LESS, 1.0) + operated(nan, HDNTExpr::AND, 1.0), "falsetrue");
    EXPECT_EQ(operated(0.5, HDNTExpr::NOT, 0.0), "true");
    EXPECT_EQ(operated(1.0, beyond, 1.0), "HDNTNetlist: Operator not supported");
    for (const Op op : {HDNTExpr::ADD, HDNTExpr::NEGATE, HDNTExpr::REMAINDER})
        EXPECT_EQ(operated(true, op, false), "HDNTNetlist: illegal operation for type bool");
    EXPECT_EQ(operated(true, HDNTExpr::GREATER, false) + operated(true, HDNTExpr::NOT_EQUAL, true), "truefalse");
    EXPECT_EQ(operated(true, beyond, false), "HDNTNetlist: Operator not supported");
    EXPECT_EQ(operated("abc", HDNTExpr::EQUAL, "abc") + operated("abc", HDNTExpr::NOT_EQUAL, "abC"), "truetrue");
    EXPECT_EQ(operated("abc", HDNTExpr::LESS, "abd"), "HDNTNetlist: illegal operation for type string");
    EXPECT_EQ(operated("abc", beyond, "abd"), "Invalid Operator");
    std::string texts;
    for (unsigned op = 0; op < 17; ++op) texts += HDNTExpr::getStringOperator(static_cast<Op>(op)) + std::string(" ");
    EXPECT_EQ(texts, "+ -  * / % && ||  > < <= >= != ==   ");
}

// The expression of a condition, parsed in a library that declares what it calls.
class ExprInLibrary {
public:
    explicit ExprInLibrary(const std::string& text)
        : library(
              support::loaded("library \"L\" { function int i(); function string s(); function int sum(int, string);"
                              "function 4'h h(); block \"ADD\" { } mapsto { if (" +
                              text + ") { } } }")) {}
    HDNTIfStmt& stmt() const { return *library->getTypeBlock(0)->getNetlist()->ifStmts().at(0); }
    std::string evaluated() const {
        try {
            stmt().condition()->evaluate();
            return stmt().conditionIsTrue() ? "true" : "false";
        } catch (const HEXAlgException& e) {
            const bool constant = dynamic_cast<HDNTValue*>(stmt().condition());
            EXPECT_EQ(stmt().condition()->getEvaluatedExpr(), constant ? stmt().condition() : nullptr);
            return e.what();
        }
    }
    std::unique_ptr<HDNTLibrary> library;
};

TEST(Expr, PrecedenceAndEvaluation) {
    Reports reports;
    HDNTFunctionTable::global().add("i", [](const HDNTFunctionCall&, const std::vector<const HDNTValue*>&) {
        return std::make_unique<HDNTIntConstant>(5);
    });
    HDNTFunctionTable::global().add("sum", [](const HDNTFunctionCall&, const std::vector<const HDNTValue*>& a) {
        return std::make_unique<HDNTIntConstant>(HDNTValue::getIntValue(a.at(0)) +
                                                 static_cast<int>(HDNTValue::getStringValue(a.at(1)).size()));
    });
    const struct {
        const char* text;
        const char* result;
    } cases[] = {
        {"1 + 2 * 3 == 7", "true"},
        {"(1 + 2) * 3 == 9", "true"},
        {"10 - 4 - 3 == 3", "true"},
        {"- (3) + 5 == 2", "true"},
        {"7 % 4 * 2 == 6", "true"},
        {"1 < 2 == true", "true"},
        {"false && false || true", "true"},
        {"true || 1 / 0 == 1", "Divide by zero"},
        {"i() + 1 == 6", "true"},
        {"sum(i(), \"abc\") == 8", "true"},
        {"1.5 > 1.0", "true"},
        {"\"a\" != \"b\"", "true"},
        {"0.0", "false"},
        {"\"TRUE\"", "true"},
        {"\"x\"", "Attribute type mismatch (not bool) in block mapping"},
        {"s() == \"a\"", "HDNTNetlist: no implementation of function s"},
    };
    for (const auto& [text, result] : cases) {
        const ExprInLibrary expr(text);
        EXPECT_EQ(reports.take(), Texts{}) << text;
        EXPECT_FALSE(dynamic_cast<HDNTCompoundExpr*>(expr.stmt().condition()) && expr.stmt().conditionIsTrue());
        EXPECT_EQ(expr.evaluated(), result) << text;
        EXPECT_EQ(expr.evaluated(), result) << "again: " << text;
    }
}

TEST(Expr, TypesAreReportedOnceAtTheInnermostPlace) {
    Reports reports;
    const struct {
        const char* text;
        Texts reports;
    } cases[] = {
        {"1 + 1.0", {"Invalid operands"}},
        {"1 + \"a\" + 2 == 3.0", {"Invalid operands"}},
        {"true + true", {"Invalid operands"}},
        {"1.0 % 2.0 == 1.0", {"Invalid operands"}},
        {"\"a\" < \"b\"", {"Invalid operands"}},
        {"- (true)", {"Invalid operands"}},
        {"h() == s()", {}},
        {"(1 == 1.0) && (true == 1)", {"Invalid operands", "Invalid operands"}},
        {"none() + 1.0 == 2", {"Function none is missing from library"}},
        {"sum(1)", {"Function call has mismatched number of args in function sum"}},
        {"sum(\"a\", 1)", {"Argument type mismatch at argument 1", "Argument type mismatch at argument 2"}},
        {"sum(i(), h())", {}},
        {"sum(1 + 1.0, \"a\")", {"Invalid operands"}},
    };
    for (const auto& [text, expected] : cases) {
        const ExprInLibrary expr(text);
        Texts found;
        for (const std::string& report : reports.take()) found.push_back(report.substr(report.find(' ') + 1));
        EXPECT_EQ(found, expected) << text;
        expr.library->getTypeBlock(0)->getNetlist()->finalize();
        EXPECT_EQ(reports.take(), Texts{}) << text;
    }
}

template <typename Action>
static std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const HEXAlgException& e) {
        return e.what();
    }
    return "";
}

TEST(Expr, EvaluationNeedsNoFinalize) {
    HDNTCompoundExpr sum(new HDNTIntConstant(1), HDNTExpr::ADD, new HDNTIntConstant(2));
    sum.evaluate();
    EXPECT_EQ(HDNTValue::getIntValue(sum.getEvaluatedExpr()), 3);
    sum.setEvaluatedExpr(sum.getEvaluatedExpr());
    EXPECT_EQ(HDNTValue::getIntValue(sum.getEvaluatedExpr()), 3);
    HDNTCompoundExpr missing(nullptr, HDNTExpr::ADD, new HDNTIntConstant(2));
    HDNTCompoundExpr mixed(new HDNTIntConstant(1), HDNTExpr::EQUAL, new HDNTStringConstant("a"));
    HDNTCompoundExpr wrong(nullptr, beyond, nullptr);
    EXPECT_EQ(messageOf([&] { missing.evaluate(); }), "HDNTNetlist: invalid nullptr expression");
    EXPECT_EQ(messageOf([&] { mixed.evaluate(); }), "HDNTNetlist: mismatched expression types");
    EXPECT_EQ(messageOf([&] { wrong.finalize(); }), "Invalid Operator");
    EXPECT_EQ(messageOf([&] { HDNTValue::getIntValue(&sum); }), "Attribute type mismatch (not int) in block mapping");
    HDNTIfStmt stmt(new HDNTIntConstant(0), new HDNTStmtBlock(nullptr), nullptr);
    stmt.condition()->setEvaluatedExpr(nullptr);
    EXPECT_FALSE(stmt.conditionIsTrue());
}

// Whatever a constant is told to hold, it is deleted once and keeps its value.
TEST(Expr, AConstantIsItsOwnResultUntilItIsGivenAnother) {
    HDNTIntConstant constant(4);
    EXPECT_EQ(constant.getEvaluatedExpr(), &constant);
    auto* const other = new HDNTIntConstant(5);
    constant.setEvaluatedExpr(other);
    EXPECT_EQ(constant.getEvaluatedExpr(), other);
    EXPECT_EQ(constant.getValue(), 4);
    constant.setEvaluatedExpr(&constant);
    EXPECT_EQ(constant.getEvaluatedExpr(), &constant);
    constant.setEvaluatedExpr(new HDNTIntConstant(6));
    constant.evaluate();
    EXPECT_EQ(constant.getEvaluatedExpr(), &constant);
    HDNTCompoundExpr sum(new HDNTIntConstant(1), HDNTExpr::ADD, new HDNTIntConstant(2));
    sum.setEvaluatedExpr(&sum);
    EXPECT_EQ(sum.getEvaluatedExpr(), nullptr);
}

TEST(Expr, EvaluationStoresTheResultsInside) {
    HDNTFunctionTable::global().add("twice", [](const HDNTFunctionCall&, const std::vector<const HDNTValue*>& a) {
        return std::make_unique<HDNTIntConstant>(2 * HDNTValue::getIntValue(a.at(0)));
    });
    auto* const difference = new HDNTCompoundExpr(new HDNTIntConstant(9), HDNTExpr::SUBTRACT, new HDNTIntConstant(2));
    auto* const twice = new HDNTFunctionCall("twice", new std::vector<HDNTExpr*>{difference});
    auto* const negative = new HDNTCompoundExpr(nullptr, HDNTExpr::NEGATE, new HDNTIntConstant(4));
    HDNTCompoundExpr sum(twice, HDNTExpr::ADD, negative);
    sum.evaluate();
    const auto resultOf = [](const HDNTExpr& expr) { return HDNTValue::getIntValue(expr.getEvaluatedExpr()); };
    EXPECT_EQ(std::tuple(resultOf(sum), resultOf(*twice), resultOf(*difference), resultOf(*negative)),
              std::tuple(10, 14, 7, -4));
    EXPECT_EQ(std::tuple(twice->getNumActuals(), twice->getActual(0)), std::tuple(1U, difference));
    EXPECT_EQ(messageOf([&] { twice->getActual(1); }), "Function argument index out of range");

    HDNTFunctionTable none;
    none.add("twice", [](const auto&, const auto&) -> std::unique_ptr<HDNTValue> { throw HEXAlgException("no"); });
    const HDNTFunctionTable::Scope scope(none);
    EXPECT_EQ(messageOf([&] { sum.evaluate(); }), "no");
    EXPECT_EQ(std::tuple(sum.getEvaluatedExpr(), twice->getEvaluatedExpr(), negative->getEvaluatedExpr()),
              std::tuple(nullptr, nullptr, nullptr));
    EXPECT_EQ(resultOf(*difference), 7);
}

TEST(Expr, ADeclarationAnswersWhetherArgumentsFit) {
    const Reports reports;
    const std::vector<HATAttrTypes::AttrType> formals = {HATAttrTypes::TypeInt, HATAttrTypes::TypeString};
    const HDNTFunctionDecl sum("sum", HATAttrTypes::TypeInt, &formals);
    const HDNTFunctionDecl none("none", HATAttrTypes::TypeInt, nullptr);
    HDNTFunctionCall call("sum", nullptr);
    HDNTIntConstant number(1);
    HDNTStringConstant text("a");
    HDNTFunctionCall unknown("unknown", nullptr); // of no declaration, so of no type
    const std::pair<std::vector<HDNTExpr*>, bool> cases[] = {
        {{&number, &text}, true},  {{&unknown, &unknown}, true},    {{}, false},
        {{&number}, false},        {{&text, &text}, false},         {{&number, &number}, false},
        {{&text, &number}, false}, {{&number, &text, &text}, false}};
    for (const auto& [actuals, fits] : cases) {
        EXPECT_EQ(sum.matchArgs(&actuals, &call), fits) << actuals.size();
        EXPECT_EQ(none.matchArgs(&actuals, &call), actuals.empty()) << actuals.size();
    }
    EXPECT_TRUE(none.matchArgs(nullptr, &call));
    EXPECT_FALSE(sum.matchArgs(nullptr, &call));
}

TEST(Expr, AMillionOperationsAreDeletedHoweverTheyAreNested) {
    for (const bool isRight : {true, false}) {
        HDNTExpr* expr = new HDNTIntConstant(1);
        for (int i = 0; i < 1000000; ++i) {
            auto* const other = new HDNTIntConstant(1);
            expr = isRight ? new HDNTCompoundExpr(other, HDNTExpr::ADD, expr)
                           : new HDNTCompoundExpr(expr, HDNTExpr::ADD, other);
        }
        delete expr;
    }
}

// Of a class that the library does not know; without a result when `result` is null.
class HostsExpr : public HDNTExpr {
public:
    explicit HostsExpr(std::function<HDNTExpr*()> result) : result_(std::move(result)) {}
    void accept(HDNTVisitor&) override {}
    void evaluate() override {
        ++evaluations;
        setEvaluatedExpr(result_ ? result_() : nullptr);
    }
    int evaluations = 0;

private:
    std::function<HDNTExpr*()> result_;
};

TEST(Expr, ClassesOfTheHostAreOperands) {
    auto* const three = new HostsExpr([] { return new HDNTIntConstant(3); });
    HDNTCompoundExpr sum(new HDNTIntConstant(1), HDNTExpr::ADD, three);
    sum.finalize();
    EXPECT_EQ(HDNTError::numErrors, 0);
    sum.evaluate();
    EXPECT_EQ(HDNTValue::getIntValue(sum.getEvaluatedExpr()), 4);
    EXPECT_EQ(HDNTValue::getIntValue(three->getEvaluatedExpr()), 3);
    EXPECT_EQ(three->evaluations, 1);
    const std::function<HDNTExpr*()> noConstants[] = {nullptr, [] { return new HDNTFunctionCall("f", nullptr); },
                                                      [] { return new HostsExpr(nullptr); }};
    for (const auto& result : noConstants) {
        HDNTCompoundExpr wrong(new HostsExpr(result), HDNTExpr::ADD, new HDNTIntConstant(1));
        EXPECT_EQ(messageOf([&] { wrong.evaluate(); }), "HDNTNetlist: the expression gives no constant");
    }
}

TEST(Expr, ScopesLieOverTheGlobalTable) {
    const auto constant = [](int value) {
        return [value](const HDNTFunctionCall&, const std::vector<const HDNTValue*>&) {
            return std::make_unique<HDNTIntConstant>(value);
        };
    };
    const auto called = [] {
        HDNTFunctionCall call("f", nullptr);
        call.evaluate();
        return HDNTValue::getIntValue(call.getEvaluatedExpr());
    };
    HDNTFunctionTable::global().add("f", constant(1));
    HDNTFunctionTable inner;
    inner.add("f", constant(2));
    {
        const HDNTFunctionTable::Scope scope(inner);
        EXPECT_EQ(called(), 2);
    }
    EXPECT_EQ(called(), 1);
    HDNTFunctionTable::global().add("f", [](const auto&, const auto&) { return nullptr; });
    EXPECT_THROW(called(), HEXAlgException);
}
