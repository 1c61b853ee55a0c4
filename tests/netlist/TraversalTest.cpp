#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <thread>

namespace {

// Writes down every call it gets.
template <typename Base>
class LogOf : public Base {
public:
    bool enter(HDNTNetlist*) override { return add("enter"), entering; }
#define LOGGED(Kind)                                                                                                   \
    void visit(HDNT##Kind*) override { add("visit " #Kind); }                                                          \
    void postVisit(HDNT##Kind*) override { add("post " #Kind); }
    LOGGED(Library)
    LOGGED(FunctionDecl)
    LOGGED(Block)
    LOGGED(BlockInst)
    LOGGED(Pin)
    LOGGED(Bus)
    LOGGED(Property)
    LOGGED(Signal)
    LOGGED(Connect)
    LOGGED(AssignBlockProperty)
    LOGGED(AssignPinProperty)
    LOGGED(Netlist)
    LOGGED(FunctionCall)
    LOGGED(StmtBlock)
    LOGGED(IfStmt)
    LOGGED(BlockPinName)
    LOGGED(IntConstant)
    LOGGED(BoolConstant)
    LOGGED(DoubleConstant)
    LOGGED(StringConstant)
    LOGGED(CompoundExpr)
#undef LOGGED
    void sectionSeparator(HDNTNetlist*) override { add("---"); }
    void elseVisit(HDNTIfStmt*) override { add("else IfStmt"); }

    bool entering = true;
    std::string text;

private:
    void add(const std::string& line) { text += line + "\n"; }
};
using Log = LogOf<HDNTVisitor>;

const char* const everything = R"(library "L" {
function bool f(int);
block "HOLD" { pin "D" input { property bool "Q" true; } property int "P" { min = 0 } }
mapsto {
  f(1);
  inst "I" "T";
  signal "S" : "I" "A";
  connect "S" : "B", "C";
  assign pin property "I" "A", "Q" true;
  assign block property "I" "P" 1 + 2.5;
  if ("a" == "b") { inst "J" "T"; } else { }
  f(2);
}
})";

const char* const expected = R"(visit Library
visit FunctionDecl
visit Block
visit Bus
visit Property
post Bus
visit Pin
visit Property
post Block
enter
visit Netlist
visit FunctionCall
visit IntConstant
post FunctionCall
visit BlockInst
---
visit Signal
visit Connect
visit BlockPinName
post Connect
post Signal
---
visit Connect
visit BlockPinName
visit BlockPinName
post Connect
---
visit AssignPinProperty
visit BoolConstant
post AssignPinProperty
---
visit AssignBlockProperty
visit IntConstant
visit CompoundExpr
visit DoubleConstant
post CompoundExpr
post AssignBlockProperty
---
visit IfStmt
visit StringConstant
visit CompoundExpr
visit StringConstant
post CompoundExpr
post IfStmt
visit StmtBlock
visit BlockInst
post StmtBlock
else IfStmt
visit StmtBlock
post StmtBlock
visit FunctionCall
visit IntConstant
post FunctionCall
post Netlist
post Library
)";

// The position of a virtual operation in its class's table.
template <typename Pointer>
size_t slotOf(Pointer pointer) {
    size_t offset = 0;
    static_assert(sizeof pointer >= sizeof offset);
    std::memcpy(&offset, &pointer, sizeof offset);
    return (offset - 1) / sizeof(void*);
}

} // namespace

TEST(Traversal, EveryKindInItsOrder) {
    const support::Reports silent;
    const auto library = support::loaded(everything);
    Log log;
    library->accept(log);
    EXPECT_EQ(log.text, expected);
}

TEST(Traversal, ClosedGatesAndDisabledBlocks) {
    const support::Reports silent;
    const auto library = support::loaded(everything);
    Log closed;
    closed.entering = false;
    library->accept(closed);
    EXPECT_TRUE(closed.text.ends_with("post Block\nenter\npost Library\n"));
    HDNTNetlist& netlist = *library->getTypeBlock(0)->getNetlist();
    netlist.ifStmts()[0]->thenStmt()->setEnabled(false);
    Log log;
    netlist.ifStmts()[0]->accept(log);
    EXPECT_TRUE(log.text.ends_with("post IfStmt\nelse IfStmt\nvisit StmtBlock\npost StmtBlock\n"));
}

// Pins are visited unless the visitor has a say in it and says no.
TEST(Traversal, VisitorsMayDoWithoutPins) {
    class Choosing : public LogOf<HDNTPinChoiceVisitor> {
    public:
        bool visitsPins() const override { return wanted; }
        bool wanted = false;
    };
    const support::Reports silent;
    const auto library = support::loaded(everything);
    Log log;
    Choosing choosing;
    library->getTypeBlock(0)->accept(log);
    library->getTypeBlock(0)->accept(choosing);
    const auto pinsIn = [](const std::string& text) { return text.find("visit Pin\n") != text.npos; };
    EXPECT_EQ(std::pair(pinsIn(log.text), pinsIn(choosing.text)), std::pair(true, false));
    EXPECT_NE(choosing.text.find("visit Bus\n"), std::string::npos);
    choosing.text.clear();
    choosing.wanted = true;
    library->getTypeBlock(0)->accept(choosing);
    EXPECT_EQ(choosing.text, log.text);
}

TEST(Traversal, ConstObjectsAreVisitedAlike) {
    const support::Reports silent;
    const auto library = support::loaded(everything);
    const HDNTBlock& block = std::as_const(*library).blocks()[0];
    const HDNTNetlist& netlist = *block.getAttachedNetlist();
    const HDNTConnect& connect = *netlist.connects()[0];
    const auto callsOf = [](const auto& node) {
        Log log;
        node.acceptOwn(log);
        return log.text;
    };
    const struct {
        std::string calls;
        const char* first;
        const char* last;
    } cases[] = {
        {callsOf(netlist), "enter\n", "post Netlist\n"},
        {callsOf(std::as_const(*library).functions()[0]), "visit FunctionDecl\n", "visit FunctionDecl\n"},
        {callsOf(block.buses()[0]), "visit Bus\n", "visit Property\npost Bus\n"},
        {callsOf(block.pins()[0]), "visit Pin\n", "visit Pin\n"},
        {callsOf(block.properties()[0]), "visit Property\n", "visit Property\n"},
        {callsOf(connect), "visit Connect\n", "visit BlockPinName\nvisit BlockPinName\npost Connect\n"},
        {callsOf(*connect.pins()[0]), "visit BlockPinName\n", "visit BlockPinName\n"},
    };
    for (const auto& [calls, first, last] : cases) {
        EXPECT_TRUE(calls.starts_with(first) && calls.ends_with(last)) << calls;
        EXPECT_NE(std::string_view(expected).find(calls), std::string_view::npos) << calls;
    }
    EXPECT_EQ(callsOf(std::as_const(*library)), expected);
}

TEST(Slots, HaveTheirNumbers) {
    using V = HDNTVisitor;
    EXPECT_EQ(slotOf(&V::enter), 2U);
#define PAIR(Kind, first)                                                                                              \
    EXPECT_EQ(slotOf(static_cast<void (V::*)(HDNT##Kind*)>(&V::visit)), first##U);                                     \
    EXPECT_EQ(slotOf(static_cast<void (V::*)(HDNT##Kind*)>(&V::postVisit)), first##U + 1)
    PAIR(Library, 3);
    PAIR(FunctionDecl, 5);
    PAIR(Block, 7);
    PAIR(BlockInst, 9);
    PAIR(Pin, 11);
    PAIR(Bus, 13);
    PAIR(Property, 15);
    PAIR(Signal, 17);
    PAIR(Connect, 19);
    PAIR(AssignBlockProperty, 21);
    PAIR(AssignPinProperty, 23);
    PAIR(Netlist, 25);
    EXPECT_EQ(slotOf(&V::sectionSeparator), 27U);
    PAIR(FunctionCall, 28);
    PAIR(StmtBlock, 30);
    PAIR(IfStmt, 32);
    EXPECT_EQ(slotOf(&V::elseVisit), 34U);
    PAIR(BlockPinName, 35);
    PAIR(IntConstant, 37);
    PAIR(BoolConstant, 39);
    PAIR(DoubleConstant, 41);
    PAIR(StringConstant, 43);
    PAIR(PrimGroup, 45);
    PAIR(CompoundExpr, 47);
#undef PAIR
    struct Longer : V {
        virtual void next() {}
    };
    EXPECT_EQ(slotOf(&Longer::next), 49U);
    static_assert(sizeof(V) == sizeof(void*));
#define NODE(Class)                                                                                                    \
    EXPECT_EQ(std::tuple(slotOf(&Class::check), slotOf(&Class::finalize), slotOf(&Class::accept)),                     \
              std::tuple(2U, 3U, 4U))                                                                                  \
        << #Class
    NODE(HDNTLibrary);
    NODE(HDNTFunctionDecl);
    NODE(HDNTBlock);
    NODE(HDNTBus);
    NODE(HDNTPin);
    NODE(HDNTNetlist);
    NODE(HDNTNetlistEntity);
    NODE(HDNTPinInst);
#undef NODE
    EXPECT_EQ(slotOf(static_cast<void (HDNTProperty::*)()>(&HDNTProperty::print)), 4U);
    EXPECT_EQ(slotOf(&HDNTProperty::accept), 5U);
    EXPECT_EQ(slotOf(&HDNTExpr::accept), 4U);
    EXPECT_EQ(slotOf(&HDNTExpr::evaluate), 5U);
    using Iter = HSTKeyValIter<std::string, HATAttrSpec*>;
    EXPECT_EQ(std::tuple(slotOf(&Iter::next), slotOf(&Iter::getKey), slotOf(&Iter::getVal)), std::tuple(0U, 1U, 2U));
}

#ifdef HDNT_SANITIZED
constexpr size_t stackBytes = size_t{8} << 20; // instrumented frames are several times as large
#else
constexpr size_t stackBytes = size_t{1} << 20;
#endif

// The deepest that the parser takes, and sums of any length, through the whole life on a stack of one megabyte.
TEST(Depth, DeepTextsNeedLittleStack) {
    const auto repeat = [](const std::string& text, int times) {
        std::string result;
        for (int i = 0; i < times; ++i) result += text;
        return result;
    };
    const auto condition = [](const std::string& text) {
        return "library \"L\" { function int f(int); block \"HOLD\" { } mapsto { if (" + text + ") { } } }";
    };
    const struct {
        std::string text;
        bool parses;
    } cases[] = {
        {condition("1" + repeat(" + 1", 300000) + " == 300001"), true},
        {condition(repeat("(", 1000) + "1" + repeat(")", 1000)), true},
        {condition(repeat("1 + (", 1000) + "1" + repeat(")", 1000)), true},
        {condition(repeat("f(", 1900) + "1" + repeat(")", 1900)), true},
        {condition(repeat("- ", 3900) + "f(1)"), true},
        {condition(repeat("(", 20000) + "1"), false},
        {"library \"L\" { block \"HOLD\" { } mapsto { " + repeat("if (1) { } else ", 150) + "{ } } }", true},
        {"library \"L\" { block \"HOLD\" { } mapsto { " + repeat("{ if (1) ", 600) + "{ }" + repeat(" }", 600) + " } }",
         true},
    };
    for (const auto& [text, parses] : cases) {
        const auto life = [&text = text, parses = parses] {
            support::Reports reports;
            const auto library = std::make_unique<HDNTLibrary>(nullptr);
            EXPECT_EQ(library->parseString(text) == 0, parses) << text.substr(60, 60);
            if (!parses) {
                EXPECT_TRUE(reports.texts.at(0).ends_with("memory exhausted"));
                return;
            }
            library->finalize();
            library->check();
            HDNTVisitor visitor;
            library->accept(visitor);
            HDNTNetlist& netlist = *library->getTypeBlock(0)->getNetlist();
            if (!netlist.ifStmts().empty() && text.find("f(") == text.npos)
                netlist.ifStmts()[0]->condition()->evaluate();
            EXPECT_EQ(reports.texts, support::Texts{}) << text.substr(60, 60);
        };
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, stackBytes);
        pthread_t thread;
        auto* const argument = const_cast<void*>(static_cast<const void*>(&life));
        const auto run = [](void* action) -> void* {
            (*static_cast<const decltype(life)*>(action))();
            return nullptr;
        };
        ASSERT_EQ(pthread_create(&thread, &attributes, run, argument), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
    }
}
