// Any bytes end a server in good order, and after any changes a document is as one that was opened with its text.
#include "tests/author/Dialogue.h"
#include "tests/author/Typist.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using support::Dialogue;
using support::Json;

static void require(bool ok, const char* what, const std::string& text) {
    if (ok) return;
    std::fprintf(stderr, "%s\n%s\n", what, text.c_str());
    std::abort();
}

static void takeAsMessages(const std::string& bytes) {
    const auto messages = Dialogue().initialize().raw(bytes).run();
    const auto isFirst = [](const Json& message) { return message.contains("id") && message["id"] == 1; };
    require(std::any_of(messages.begin(), messages.end(), isFirst), "a request without an answer", bytes);
}

static void takeAsChanges(const std::string& bytes) {
    std::size_t at = 0;
    const auto number = [&]() -> std::size_t {
        const std::size_t low = at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
        const std::size_t high = at + 1 < bytes.size() ? static_cast<unsigned char>(bytes[at + 1]) : 0;
        at += 2;
        return low + 256 * high;
    };
    support::Typist typist(number, false);
    Dialogue dialogue;
    dialogue.initialize().open("changed", typist.text());
    while (at < bytes.size()) dialogue.change("changed", typist.type()).open("opened", typist.text());
    const auto messages = dialogue.run();
    for (std::size_t i = 2; i + 1 < messages.size(); i += 2)
        require(messages[i]["params"]["diagnostics"] == messages[i + 1]["params"]["diagnostics"],
                "not as read from scratch", typist.text());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    takeAsMessages(bytes);
    takeAsChanges(bytes.substr(0, 400));
    return 0;
}
