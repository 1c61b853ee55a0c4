#include "tests/author/Dialogue.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>

// Messages, and the life of a server.
namespace {

using support::briefly;
using support::Dialogue;
using support::framed;
using support::Json;
using support::rangeOf;

const std::string request = R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"capabilities":{}}})";
const std::string size = std::to_string(request.size());
const std::string second = framed(R"({"jsonrpc":"2.0","id":2,"method":"initialize"})");

struct Case {
    std::string input;
    std::string answers;
};

void expectAll(const std::vector<Case>& cases) {
    for (const Case& each : cases)
        EXPECT_EQ(briefly(Dialogue().raw(each.input).run()), each.answers) << each.input.substr(0, 300);
}

std::string message(const std::string& members) { return framed(R"({"jsonrpc":"2.0",)" + members + "}"); }

} // namespace

TEST(Server, HeadersOfEveryForm) {
    expectAll({
        {"Content-Length: " + size + "\r\n\r\n" + request, "1 result"},
        {"Content-Length: " + size + "\n\n" + request, "1 result"},
        {"content-LENGTH:" + size + " \r\nContent-Type: text/plain; charset=\"x\"\r\n\r\n" + request, "1 result"},
        {"Content-Type: a\r\nX-Content-Length: 3\r\nContent-Length : " + size + "\r\n\r\n" + request, "1 result"},
        {"\r\n\r\nContent-Length: " + size + "\r\n\r\n" + request + "\n", "1 result"},
        {framed(request) + second, "1 result, 2 -32600"},
        {"", ""},
        {"Content-Length: 100", ""},
        {"Content-Length: 100\r\n\r\n{", ""},
    });
}

TEST(Server, BrokenHeadersAndLengthsThatLie) {
    const std::string noHeader = std::string(100000, 'x') + '}';
    expectAll({
        {"Content-Type: a\r\n\r\n" + framed(request), "null -32700, 1 result"},
        {"Content-Length: many\r\n\r\n" + framed(request), "null -32700, 1 result"},
        {"Content-Length: -5\r\n\r\n" + framed(request), "null -32700, 1 result"},
        {"Content-Length: 99999999999999999999999\r\n\r\n" + framed(request), "null -32700, 1 result"},
        {"Content-Length: 0\r\n\r\n" + framed(request), "null -32700, 1 result"},
        {"no header\r\nContent-Length: " + size + "\r\n\r\n" + request, "null -32700, 1 result"},
        {noHeader, "null -32700"},
        {noHeader + framed(request), "null -32700, 1 result"},
        {std::string(3, '\0') + "\n" + framed(request), "null -32700, 1 result"},
        // Too small: JSON that is cut, and a rest before the next headers. Too great: that takes the next headers
        // along.
        {"Content-Length: 20\r\n\r\n" + request + second, "null -32700, null -32700, 2 result"},
        {"Content-Length: " + std::to_string(request.size() + 9) + "\r\n\r\n" + request + second + second,
         "null -32700, null -32700, 2 result"},
        {"Content-Length: 99999999999\r\n\r\n" + request, "null -32600"},
        {"Content-Length: 140000000\r\n\r\n" + std::string(140000000, ' ') + framed(request), "null -32600, 1 result"},
    });
}

TEST(Server, MessagesThatAreNone) {
    expectAll({
        {framed("{"), "null -32700"},
        {framed(""), "null -32700"},
        {framed("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}"), "null -32700"},
        {framed(std::string(3000000, '[')), "null -32700"},
        {framed("[" + request + "]"), "null -32600"},
        {framed("7"), "null -32600"},
        {framed("{}"), "null -32600"},
        {framed(R"({"id":1,"method":"initialize"})"), "1 -32600"},
        {message(R"("id":1)"), "1 -32600"},
        {message(R"("id":"a","method":3)"), "\"a\" -32600"},
        {message(R"("id":1.5,"method":"initialize")"), "null -32600"},
        {message(R"("id":null,"method":"initialize")"), "null -32600"},
        {message(R"("id":1,"method":"initialize","params":3)"), "1 -32600"},
        {message(R"("id":1,"method":"initialize","params":{"capabilities":3})"), "1 -32602"},
        {message(R"("id":1,"method":"initialize","params":[])"), "1 -32602"},
        {message(R"("id":1,"result":null)") + message(R"("id":1,"error":{})"), ""},
    });
}

TEST(Server, Life) {
    struct Session {
        Dialogue dialogue;
        std::string answers;
        int status;
    };
    Session sessions[] = {
        {Dialogue().initialize().request("shutdown", nullptr).notify("exit").request("shutdown"), "1 result, 2 result",
         0},
        {Dialogue().initialize().notify("exit"), "1 result", 1},
        {Dialogue().notify("exit"), "", 1},
        {Dialogue().initialize(), "1 result", 1},
        {Dialogue().request("shutdown").open("a", "").initialize(), "1 -32002, 2 result", 1},
        {Dialogue().initialize().request("initialize"), "1 result, 2 -32600", 1},
        {Dialogue().initialize().request("shutdown").ask("formatting", "a").open("a", "").notify("exit"),
         "1 result, 2 result, 3 -32600", 0},
        {Dialogue().initialize().request("no/such").notify("no/such").notify("$/such").request("$/such"),
         "1 result, 2 -32601, 3 -32601", 1},
        {Dialogue().initialize().notify("$/setTrace", {{"value", "verbose"}}).request("exit"), "1 result, 2 -32601", 1},
        {Dialogue().initialize().ask("formatting", "a").notify("$/cancelRequest", {{"id", 2}}), "2 -32800, 1 result",
         1},
        {Dialogue().initialize().notify("$/cancelRequest", {{"id", 9}}).notify("$/cancelRequest", Json::array()),
         "1 result", 1},
        {Dialogue().initialize().ask("documentSymbol", "a").request("textDocument/documentSymbol"),
         "1 result, 2 -32602, 3 -32602", 1},
        {Dialogue().initialize().notify("textDocument/didOpen").change("a", Json::array()).ask("foldingRange", "a"),
         "1 result, window/logMessage, window/logMessage, 2 -32602", 1},
    };
    for (Session& session : sessions) {
        EXPECT_EQ(briefly(session.dialogue.run()), session.answers);
        EXPECT_EQ(session.dialogue.status(), session.status) << session.answers;
    }
}

TEST(Server, EncodingIsThatOfTheClient) {
    const auto encodingFor = [](const Json& capabilities) {
        return Dialogue().initialize(capabilities).run().at(0)["result"]["capabilities"]["positionEncoding"];
    };
    EXPECT_EQ(encodingFor(Json::object()), "utf-16");
    EXPECT_EQ(encodingFor({{"general", {{"positionEncodings", {"utf-16", "utf-32"}}}}}), "utf-16");
    EXPECT_EQ(encodingFor({{"general", {{"positionEncodings", {"utf-16", "utf-8"}}}}}), "utf-8");
    EXPECT_EQ(encodingFor({{"general", {{"positionEncodings", 3}}}}), "utf-16");
}

TEST(Server, OffersWhatItNames) {
    const Json all = Dialogue().initialize().run().at(0)["result"]["capabilities"];
    EXPECT_GE(all.size(), 24U);
    for (const auto& [name, capability] : all.items()) EXPECT_NE(capability, false) << name;
}

TEST(Server, EndsWhenNobodyReads) {
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    ASSERT_EQ(::pipe(in.data()), 0);
    ASSERT_EQ(::pipe(out.data()), 0);
    const std::string text = framed(request);
    ASSERT_EQ(::write(in[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(out[0]);
    EXPECT_EQ(hdnt::author::serve(in[0], out[1]), 1); // the input is open still
    for (const int descriptor : {in[0], in[1], out[1]}) ::close(descriptor);
}
