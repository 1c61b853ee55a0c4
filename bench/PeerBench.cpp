// Other readers on the same content, from the open file to their own tree.
#include "bench/Subject.h"

#include <libconfig.h++>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <simdjson.h>

#include <memory>

namespace bench {

namespace {

Work nlohmannDom(const Corpus& corpus) {
    auto held = std::make_shared<nlohmann::json>();
    return {.run = [held, path = corpus.path("json")] { *held = nlohmann::json::parse(readFile(path)); },
            .drop = [held] { *held = nullptr; }};
}

Work rapidjsonDom(const Corpus& corpus) {
    auto held = std::make_shared<std::unique_ptr<rapidjson::Document>>();
    return {.run =
                [held, path = corpus.path("json")] {
                    const std::string text = readFile(path);
                    *held = std::make_unique<rapidjson::Document>();
                    if ((*held)->Parse(text.data(), text.size()).HasParseError())
                        fail("RapidJSON cannot parse " + path);
                },
            .drop = [held] { held->reset(); }};
}

/// The parser has the tree.
Work simdjsonDom(const Corpus& corpus) {
    auto held = std::make_shared<std::unique_ptr<simdjson::dom::parser>>();
    return {.run =
                [held, path = corpus.path("json")] {
                    simdjson::padded_string text;
                    if (simdjson::padded_string::load(path).get(text)) fail("cannot read " + path);
                    *held = std::make_unique<simdjson::dom::parser>();
                    if ((*held)->parse(text).error()) fail("simdjson cannot parse " + path);
                },
            .drop = [held] { held->reset(); }};
}

Work libconfigTree(const Corpus& corpus) {
    auto held = std::make_shared<std::unique_ptr<libconfig::Config>>();
    return {.run =
                [held, path = corpus.path("cfg")] {
                    *held = std::make_unique<libconfig::Config>();
                    (*held)->readFile(path.c_str());
                },
            .drop = [held] { held->reset(); }};
}

} // namespace

void addPeerSubjects(std::vector<Subject>& subjects) {
    subjects.push_back({"load-nlohmann", Subject::Sizes::All, nlohmannDom});
    subjects.push_back({"load-rapidjson", Subject::Sizes::All, rapidjsonDom});
    subjects.push_back({"load-simdjson", Subject::Sizes::All, simdjsonDom});
    subjects.push_back({"load-libconfig", Subject::Sizes::All, libconfigTree});
}

} // namespace bench
