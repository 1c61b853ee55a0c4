// Names to blocks, pins and properties.
#include "bench/Generator.h"
#include "bench/Libraries.h"
#include "bench/Subject.h"

#include <algorithm>
#include <map>

namespace bench {

namespace {

/// In another order than they were declared in, and half of them in lower case.
template <typename Query>
void shuffle(std::vector<Query>& queries) {
    Random random(7);
    for (size_t i = queries.size(); i > 1; --i)
        std::swap(queries[i - 1], queries[static_cast<size_t>(random.below(static_cast<int>(i)))]);
}

std::string lowered(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

std::string raised(std::string text) {
    for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

struct BlockNames {
    explicit BlockNames(int count) {
        Generator generator(1);
        for (int i = 0; i < count; ++i) {
            names.push_back(generator.next().name);
            queries.push_back(i % 2 ? lowered(names.back()) : names.back());
        }
        shuffle(queries);
    }
    std::vector<std::string> names;
    std::vector<std::string> queries;
};

Work lookUpBlocks(int count) {
    auto names = std::make_shared<const BlockNames>(count);
    std::string text = "library \"L\" {\n";
    for (const std::string& name : names->names) text += "block \"" + name + "\" { }\n";
    auto library = std::make_shared<LibraryPointer>(loadText(text + "}\n"));
    return {.run =
                [=] {
                    for (const std::string& name : names->queries)
                        if (!(*library)->getTypeBlockByName(name, true)) fail("no block " + name);
                },
            .items = names->queries.size()};
}

/// What a look-up may cost: an ordered map, asked with an upper-cased copy.
Work lookUpInMap(int count) {
    auto names = std::make_shared<const BlockNames>(count);
    auto map = std::make_shared<std::map<std::string, const std::string*>>();
    for (const std::string& name : names->names) map->emplace(name, &name);
    return {.run =
                [=] {
                    for (const std::string& name : names->queries)
                        if (map->find(raised(name)) == map->end()) fail("no entry " + name);
                },
            .items = names->queries.size()};
}

struct MemberQuery {
    const HDNTBlock* block;
    std::string name;
};

/// Every second query in lower case, over all blocks of the corpus.
template <typename Names, typename Find>
Work lookUpMembers(const Corpus& corpus, Names&& namesOf, Find&& find) {
    auto library = std::make_shared<LibraryPointer>(loadFile(corpus.path("btl")));
    auto queries = std::make_shared<std::vector<MemberQuery>>();
    for (size_t b = 0; b < (*library)->getNumTypeBlocks(false); ++b) {
        const HDNTBlock* const block = (*library)->getTypeBlock(b);
        for (const std::string& name : namesOf(*block))
            queries->push_back({block, queries->size() % 2 ? lowered(name) : name});
    }
    shuffle(*queries);
    return {.run =
                [=] {
                    for (const MemberQuery& query : *queries)
                        if (!find(*query.block, query.name)) fail("nothing is called " + query.name);
                },
            .drop = [library] {}, // the queries point into it
            .items = queries->size()};
}

Work lookUpPins(const Corpus& corpus) {
    return lookUpMembers(
        corpus,
        [](const HDNTBlock& block) {
            std::vector<std::string> names;
            for (size_t i = 0; i < block.getNumPins(); i += 3) names.push_back(block.getPin(i)->getName(false));
            return names;
        },
        [](const HDNTBlock& block, const std::string& name) { return block.getPinByName(name); });
}

Work lookUpProperties(const Corpus& corpus) {
    return lookUpMembers(
        corpus,
        [](const HDNTBlock& block) {
            std::vector<std::string> names;
            for (size_t i = 0; i < block.getNumProperties(); ++i) names.push_back(block.getProperty(i)->getName());
            return names;
        },
        [](const HDNTBlock& block, const std::string& name) { return block.getPropertyByName(name); });
}

} // namespace

void addLookUpSubjects(std::vector<Subject>& subjects) {
    for (const int count : {3000, 30000}) {
        const std::string suffix = std::to_string(count);
        subjects.push_back(
            {"find_block_" + suffix, Subject::Sizes::One, [=](const Corpus&) { return lookUpBlocks(count); }});
        subjects.push_back(
            {"find_block_" + suffix + "-map", Subject::Sizes::One, [=](const Corpus&) { return lookUpInMap(count); }});
    }
    subjects.push_back({"find_pin", Subject::Sizes::UpToTen, lookUpPins});
    subjects.push_back({"find_property", Subject::Sizes::UpToTen, lookUpProperties});
}

} // namespace bench
