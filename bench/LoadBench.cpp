// What it costs to bring a text into the model, step by step and with other texts and configurations.
#include "bench/Libraries.h"
#include "bench/Subject.h"
#include "hdnt/frontend/Scanner.h"

#include <cstdlib>

namespace bench {

namespace {

/// A library that is made by one step and measured in it or in the next one.
struct Held {
    LibraryPointer library;
    void drop() {
        library.reset();
        NtlFreeScannerMem();
    }
};

Work load(const std::string& path) {
    auto held = std::make_shared<Held>();
    return {.run = [=] { held->library = loadFile(path); }, .drop = [=] { held->drop(); }};
}

void checkWithDiagnostics(Held& held) {
    HDNTLibraryMgr::m_diagnostics = true;
    held.library->check();
}

/// A step on a library that was loaded for it.
Work step(const std::function<LibraryPointer()>& make, const std::function<void(Held&)>& measured) {
    auto held = std::make_shared<Held>();
    return {.prepare = [=] { held->library = make(); },
            .run =
                [=] {
                    measured(*held);
                    expectNoReports();
                },
            .drop = [=] { held->drop(); }};
}

/// As many signals as connects, each connect at the signal furthest from its own place.
std::string wires() {
    constexpr int count = 20000;
    std::string text = "library \"L\" { block \"HOLD\" { pin \"D\" input; } mapsto { inst \"U\" \"HOLD\";\n";
    for (int i = 0; i < count; ++i) text += "signal \"N" + std::to_string(i) + "\";\n";
    for (int i = count; i-- > 0;) text += "connect \"N" + std::to_string(i) + "\" : \"U\" \"D\";\n";
    return text + "} }";
}

} // namespace

void addLoadSubjects(std::vector<Subject>& subjects) {
    using Sizes = Subject::Sizes;
    subjects.push_back({"load", Sizes::UpToThousand, [](const Corpus& corpus) { return load(corpus.path("btl")); }});
    subjects.push_back(
        {"load-lines", Sizes::UpToTen, [](const Corpus& corpus) { return load(corpus.path("lines.btl")); }});
    subjects.push_back(
        {"load-oneline", Sizes::UpToTen, [](const Corpus& corpus) { return load(corpus.path("one-line.btl")); }});
    subjects.push_back({"load-folder", Sizes::Ten, [](const Corpus& corpus) {
                            auto held = std::make_shared<Held>();
                            return Work{
                                .run = [held, path = corpus.path("parts")] { held->library = loadFolder(path); },
                                .drop = [held] { held->drop(); }};
                        }});
    subjects.push_back({"load-described", Sizes::UpToTen, [](const Corpus& corpus) {
                            setenv("HDNT_CONFIG_PATH", corpus.path("described").c_str(), 1);
                            auto root = std::make_shared<HDNTLibrary>(nullptr);
                            auto held = std::make_shared<Held>();
                            return Work{
                                .prepare = [=] { root->getDescConfig(); },
                                .run = [=, path = corpus.path("btl")] { held->library = loadFile(path, root.get()); },
                                .drop = [=] { held->drop(); }};
                        }});
    subjects.push_back({"read-descriptions", Sizes::UpToTen, [](const Corpus& corpus) {
                            setenv("HDNT_CONFIG_PATH", corpus.path("described").c_str(), 1);
                            auto held = std::make_shared<Held>();
                            return Work{.prepare = [=] { held->library = std::make_unique<HDNTLibrary>(nullptr); },
                                        .run = [=] { held->library->getDescConfig(); },
                                        .drop = [=] { held->drop(); }};
                        }});
    subjects.push_back({"parse", Sizes::All, [](const Corpus& corpus) {
                            auto held = std::make_shared<Held>();
                            return Work{.run = [held, path = corpus.path("btl")] { held->library = parseFile(path); },
                                        .drop = [held] { held->drop(); }};
                        }});
    subjects.push_back({"finalize", Sizes::UpToTen, [](const Corpus& corpus) {
                            return step([path = corpus.path("btl")] { return parseFile(path); },
                                        [](Held& held) { held.library->finalize(); });
                        }});
    subjects.push_back({"check", Sizes::All, [](const Corpus& corpus) {
                            return step([path = corpus.path("btl")] { return loadFile(path); }, checkWithDiagnostics);
                        }});
    subjects.push_back({"release", Sizes::UpToTen, [](const Corpus& corpus) {
                            return step([path = corpus.path("btl")] { return loadFile(path); },
                                        [](Held& held) { held.drop(); });
                        }});
    subjects.push_back({"wires", Sizes::One, [](const Corpus&) {
                            auto held = std::make_shared<Held>();
                            return Work{.run = [held, text = wires()] { held->library = loadText(text); },
                                        .drop = [held] { held->drop(); }};
                        }});
    subjects.push_back({"wires-finish", Sizes::One, [](const Corpus&) {
                            return step([text = wires()] { return parseText(text); },
                                        [](Held& held) {
                                            held.library->finalize();
                                            checkWithDiagnostics(held);
                                        });
                        }});
}

} // namespace bench
