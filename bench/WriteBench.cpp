// The model as text, beside JSON libraries that write the same content, and the layout of a file.
#include "author/format/HDNTFormatter.h"
#include "bench/Libraries.h"
#include "bench/Subject.h"
#include "hdnt/frontend/Scanner.h"

#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace bench {

namespace {

struct Written {
    Written(const std::string& path) : library(loadFile(path)), stream(std::fopen("/dev/null", "w")) {
        NtlFreeScannerMem();
    }
    ~Written() { std::fclose(stream); }
    Written(const Written&) = delete;

    LibraryPointer library;
    FILE* stream;
};

Work printedForm(const Corpus& corpus) {
    auto written = std::make_shared<Written>(corpus.path("btl"));
    return {.run = [written] { written->library->print(written->stream); }};
}

Work sourceForm(const Corpus& corpus) {
    auto written = std::make_shared<Written>(corpus.path("btl"));
    return {.run = [written] {
        if (!written->library->printSource(written->stream, nullptr)) fail("the library cannot be written as source");
    }};
}

Work nlohmannDump(const Corpus& corpus) {
    auto json = std::make_shared<const nlohmann::json>(nlohmann::json::parse(corpus.text("json")));
    return {.run = [json] {
        if (json->dump().empty()) fail("nothing was written");
    }};
}

Work rapidjsonWriter(const Corpus& corpus) {
    auto document = std::make_shared<rapidjson::Document>();
    document->Parse(corpus.text("json").c_str());
    return {.run = [document] {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        if (!document->Accept(writer)) fail("nothing was written");
    }};
}

/// Laying a text out anew, the proof that nothing but blanks has changed included.
Work format(const Corpus& corpus, const char* form) {
    auto text = std::make_shared<const std::string>(corpus.text(form));
    auto out = std::make_shared<std::string>();
    return {.run = [text, out] {
        HDNTFormatProblem problem;
        if (!HDNTFormatter::format(*text, *out, problem)) fail(problem.reason);
    }};
}

/// A text with as many tokens, and as deep, as there can be in so many bytes. Whether it can be laid out is not asked.
Work formatBraces(const Corpus& corpus) {
    auto text = std::make_shared<const std::string>(corpus.bytes(), '{');
    auto out = std::make_shared<std::string>();
    return {.run = [text, out] {
        HDNTFormatProblem problem;
        HDNTFormatter::format(*text, *out, problem);
    }};
}

} // namespace

void addWriteSubjects(std::vector<Subject>& subjects) {
    using Sizes = Subject::Sizes;
    subjects.push_back({"print", Sizes::All, printedForm});
    subjects.push_back({"print-nlohmann", Sizes::All, nlohmannDump});
    subjects.push_back({"print-rapidjson", Sizes::All, rapidjsonWriter});
    subjects.push_back({"source", Sizes::All, sourceForm});
    subjects.push_back({"format", Sizes::UpToTen, [](const Corpus& corpus) { return format(corpus, "btl"); }});
    subjects.push_back(
        {"format-oneline", Sizes::UpToTen, [](const Corpus& corpus) { return format(corpus, "one-line.btl"); }});
    subjects.push_back({"format-braces", Sizes::Ten, formatBraces});
}

} // namespace bench
