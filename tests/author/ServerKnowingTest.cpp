#include "tests/author/Desk.h"

#include <gtest/gtest.h>

// What the server knows of a text beside its names: what calls take, what stands behind names, who uses whom.
namespace {

using support::Desk;
using support::Json;

const std::string below = "library \"base\" {\n"
                          "  // Takes *both*\n"
                          "  function 8'h maskOf(4'b, bool);\n"
                          "  function bool none();\n"
                          "  function int broken(int, ;\n"
                          "  block \"GATE\" {\n"
                          "    pin \"A[3:0]\" input { property int \"DELAY\" { min = 0, units = \"ns\" } }\n"
                          "    pin \"O\" output;\n"
                          "    property string \"MODE\" { values { \"FAST\", \"SLOW\" }, default = \"SLOW\" }\n"
                          "    property 8'h \"MASK\" { default = \"8'h00\" }\n"
                          "  }\n"
                          "}\n";

Desk deskWith(const std::string& text) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ];").file("below/base.btl", below);
    desk.file("a.btl", text).open("a.btl", text);
    return desk;
}

std::string mapping(const std::string& statements) {
    return "library \"L\" {\n  block \"USER\" { pin \"IN[1:0]\" input; pin \"E\" input; } mapsto {\n" + statements;
}

struct Case {
    std::string text;
    std::string expected;
};

} // namespace

// The label with the active parameter in brackets, and the documentation.
TEST(ServerKnowing, SignatureHelp) {
    const std::string mask = "8'h maskOf([4'b], bool) Takes *both*", second = "8'h maskOf(4'b, [bool]) Takes *both*";
    const std::string standard = "bool isConnected([string]) Whether the pin of that name of the block is connected.";
    const Case cases[] = {
        {"if (maskOf(^1, 2) > 1) { } } }", mask},
        {"if (maskOf(1^, 2) > 1) { } } }", mask},
        {"if (maskOf(1,^ 2) > 1) { } } }", second},
        {"if (maskOf(1, 2^) > 1) { } } }", second},
        {"if (maskOf(1, 2)^ > 1) { } } }", ""},
        {"if (maskOf^(1, 2) > 1) { } } }", ""},
        {"maskOf(1, 2, ^", "8'h maskOf(4'b, bool) Takes *both*"},
        {"none(^", "bool none()"},
        {"broken(1^", "int broken([int])"},
        {"/* \xc3\xa4\xf0\x9f\x98\x80 */ maskOf(\"\xc3\xa4, (\", ^", second},
        {"maskOf(\"a, b^", mask},
        {"maskOf(1, isConnected(\"E\", (2, ^",
         "bool isConnected(string) Whether the pin of that name of the block is connected."},
        {"maskOf(1, isConnected(^", standard},
        {"maskOf(isConnected(\"E\"), ^", second},
        {"maskOf((1 + 2), (3 *^", second},
        {"maskOf((1,2,3), ^", second},
        {"assign block property \"g\" \"MODE\" maskOf(^; inst \"b\" \"GATE\";", mask},
        {"maskOf(1 inst \"a^\" \"GATE\";", ""},
        {"if (^", ""},
        {"unknown(^", ""},
        {"} function int maskOf(int, ^", ""},
    };
    for (const Case& each : cases) {
        const Json knows = Json::parse(R"({"textDocument": {"signatureHelp": {"signatureInformation":
            {"parameterInformation": {"labelOffsetSupport": true}}}}})");
        const Json help = deskWith(mapping(each.text)).client(knows).result("textDocument/signatureHelp");
        std::string shown;
        if (!help.is_null()) {
            const Json& one = help["signatures"].at(0);
            shown = one["label"];
            if (help.contains("activeParameter")) {
                const Json& offsets = one["parameters"].at(help["activeParameter"].get<std::size_t>())["label"];
                shown.insert(offsets[1].get<std::size_t>(), "]").insert(offsets[0].get<std::size_t>(), "[");
            }
            if (one.contains("documentation")) shown += " " + one["documentation"].get<std::string>();
        }
        EXPECT_EQ(shown, each.expected) << each.text;
    }
    const Json help = deskWith(mapping("maskOf(^")).result("textDocument/signatureHelp");
    EXPECT_EQ(help["signatures"][0]["parameters"], Json::parse(R"([{"label": "4'b"}, {"label": "bool"}])"));
}
