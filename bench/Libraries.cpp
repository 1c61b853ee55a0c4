#include "bench/Libraries.h"

#include "bench/Subject.h"

namespace bench {

void expectNoReports() {
    if (HDNTError::numErrors > 0) fail("there were reports");
}

LibraryPointer parseFile(const std::string& path, HDNTLibrary* parent) {
    auto library = std::make_unique<HDNTLibrary>(parent);
    if (library->parseFile(path) != 0) fail("cannot parse " + path);
    return library;
}

LibraryPointer parseText(const std::string& text) {
    auto library = std::make_unique<HDNTLibrary>(nullptr);
    if (library->parseString(text) != 0) fail("cannot parse a text");
    return library;
}

LibraryPointer loadFile(const std::string& path, HDNTLibrary* parent) {
    LibraryPointer library = parseFile(path, parent);
    library->finalize();
    expectNoReports();
    return library;
}

LibraryPointer loadFolder(const std::string& path) {
    hdnt::LoadOptions options;
    options.check = false;
    hdnt::Loaded loaded = hdnt::load(path, options);
    if (!loaded || !loaded.diagnostics.empty()) fail("cannot load " + path);
    return std::move(loaded.library);
}

LibraryPointer loadText(const std::string& text) {
    LibraryPointer library = parseText(text);
    library->finalize();
    expectNoReports();
    return library;
}

} // namespace bench
