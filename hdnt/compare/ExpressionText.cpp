#include "hdnt/compare/ExpressionText.internal.h"
#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/writer/Elements.internal.h"

#include <algorithm>

namespace hdnt::compare {

using writer::precedenceOf;

namespace {

constexpr int loosest = 0;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

class Text {
public:
    std::string of(const HDNTExpr* expr) {
        todo_.push_back({expr, nullptr, loosest});
        while (!todo_.empty()) {
            const Piece piece = todo_.back();
            todo_.pop_back();
            if (piece.text) text_ += piece.text;
            else if (const auto* const operation = nodeCast<HDNTCompoundExpr>(piece.expr))
                add(*operation, piece.around);
            else if (const auto* const call = nodeCast<HDNTFunctionCall>(piece.expr)) add(*call);
            else text_ += constantText(piece.expr);
        }
        return text_;
    }

private:
    // What is still to be written, the next one last: a text, or an expression with what binds its operands.
    struct Piece {
        const HDNTExpr* expr;
        const char* text;
        int around;
    };

    void later(const char* text) { todo_.push_back({nullptr, text, loosest}); }
    void later(const HDNTExpr* expr, int around) { todo_.push_back({expr, nullptr, around}); }

    void add(const HDNTCompoundExpr& operation, int around) {
        const int binding = precedenceOf(operation.op());
        if (binding > precedenceOf(HDNTExpr::MULTIPLY)) return addOther(operation);
        if (binding < around) {
            text_ += '(';
            later(")");
        }
        later(operation.rhs(), binding + 1);
        later(" ");
        later(HDNTExpr::getStringOperator(operation.op()));
        later(" ");
        later(operation.lhs(), binding);
    }

    void addOther(const HDNTCompoundExpr& operation) {
        later(")");
        later(operation.rhs(), loosest);
        if (operation.op() == HDNTExpr::NEGATE) text_ += '-';
        else if (operation.op() == HDNTExpr::NOT) text_ += '!';
        else text_ += "operator " + std::to_string(operation.op());
        text_ += '(';
        if (!operation.lhs()) return;
        later(", ");
        later(operation.lhs(), loosest);
    }

    void add(const HDNTFunctionCall& call) {
        const std::string& name = call.name();
        text_ += (std::all_of(name.begin(), name.end(), isNameCharacter) ? name : quoted(name)) + '(';
        later(")");
        for (size_t i = call.actuals().size(); i-- > 0;) {
            later(call.actuals()[i], loosest);
            if (i > 0) later(", ");
        }
    }

    static std::string constantText(const HDNTExpr* expr) {
        const auto* const constant = nodeCast<HDNTValue>(expr);
        return constant ? valueText(constant->getPlainValue()) : expr ? "unknown" : "none";
    }

    std::vector<Piece> todo_;
    std::string text_;
};

} // namespace

std::string expressionText(const HDNTExpr* expr) { return Text().of(expr); }

std::string expressionTexts(const std::vector<HDNTExpr*>& exprs) {
    std::string text;
    for (const HDNTExpr* expr : exprs) text += (text.empty() ? "" : ", ") + expressionText(expr);
    return text;
}

} // namespace hdnt::compare
