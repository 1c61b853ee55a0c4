// A library as NTL, of a document as the form "json" of exportBlocks() has it. Keys that say what follows from others
// are passed over.
#include "author/exchange/NtlWriter.internal.h"
#include "author/exchange/importForms.internal.h"
#include "hdnt/platform/HEX.h"

namespace hdnt::author {

namespace {

Json documentOf(const std::string& file) {
    try {
        return Json::parse(fileText(file));
    } catch (const Json::exception& error) {
        const std::string_view what = error.what(); // "[json.exception.parse_error.101] parse error at line ..."
        throw HEXDataException(file + ": is no JSON: " + std::string(what.substr(what.find("] ") + 2)));
    }
}

void requireForm(const JsonItem& document) {
    if (!document.has("format") || document["format"].json() != "hdnt-library")
        document.refuse("is no library: its \"format\" is not \"hdnt-library\"");
    if (document["version"].json() != 1) document["version"].refuse("is not 1, which is all that is known here");
}

} // namespace

Imported importJson(const std::vector<std::string>& files) {
    if (files.size() != 1) throw HEXDataException("one file holds a library as JSON; name one");
    const std::string& file = files.front();
    const Json document = documentOf(file);
    NtlWriter writer;
    try {
        requireForm(JsonItem(document));
        writer.addLibrary(JsonItem(document));
    } catch (const JsonRefusal& refusal) {
        throw HEXDataException(file + ": " + refusal.what());
    }
    Imported imported;
    for (const std::string& one : writer.refusals()) imported.leftOut.push_back(file + ": " + one);
    imported.text = laidOut(file, writer.text());
    return imported;
}

} // namespace hdnt::author
