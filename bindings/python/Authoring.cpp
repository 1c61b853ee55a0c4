// What the tools for authors do with whole libraries.
#include "bindings/shared/Authoring.h"

#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/Text.h"
#include "hdnt/model/HDNTLibrary.h"

#include <pybind11/stl.h>

#include <optional>

namespace hdnt::python {

namespace {

Handle* libraryAt(const py::handle& self) { return handleOf(self, typeOf(HDNTNodeKind::Library)); }
HDNTLibrary& libraryOf(const HandleInUse& use) { return use.as<HDNTLibrary>(); }

py::tuple lint(const py::object& self, bool thorough, size_t budget,
               const std::optional<std::vector<std::string>>& architectures) {
    const HandleInUse use(libraryAt(self));
    LintOptions options;
    options.isThorough = thorough;
    options.budget = budget;
    options.architectures = architectures;
    return diagnosticsOf(scripts::lintOf(interpreterLock(), libraryOf(use), options));
}

py::object guide(const py::object& self, const py::object& folder, bool parents, const std::string& title,
                 const std::vector<std::string>& architectures, const py::object& older) {
    const HandleInUse use(libraryAt(self));
    author::GuideOptions options;
    options.withParents = parents;
    options.title = title;
    options.architectures = architectures;
    if (!older.is_none()) {
        const HandleInUse before(libraryAt(older));
        options.changes = {libraryOf(before).getName(),
                           scripts::differencesOf(interpreterLock(), libraryOf(before), libraryOf(use))};
    }
    const author::WrittenGuide written =
        scripts::writeGuide(interpreterLock(), libraryOf(use), pathTextOf(folder), options);
    return dataClass("WrittenGuide")(written.pages, written.drawings, textObject(written.undrawn),
                                     textObject(written.leftBehind));
}

std::vector<std::string> textsOf(const py::iterable& texts) {
    std::vector<std::string> all;
    for (const py::handle text : texts) all.push_back(textOf(text));
    return all;
}

py::tuple tupleOf(const std::vector<std::string>& texts) {
    py::tuple tuple(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) tuple[i] = textObject(texts[i]);
    return tuple;
}

py::object exportBlocks(const py::object& self, const std::string& form, const py::iterable& blocks, bool parents,
                        bool split) {
    const HandleInUse use(libraryAt(self));
    const author::Exported exported =
        scripts::exportBlocks(interpreterLock(), libraryOf(use), {form, textsOf(blocks), parents, split});
    py::dict files;
    for (const author::ExportedFile& file : exported.files) files[textObject(file.name)] = textObject(file.text);
    const py::object text = split ? py::none() : textObject(exported.files.front().text);
    return dataClass("Exported")(text, split ? py::object(files) : py::none(), tupleOf(exported.leftOut));
}

std::vector<std::string> pathsOf(const py::iterable& files) {
    std::vector<std::string> paths;
    for (const py::handle file : files) paths.push_back(pathOf(py::reinterpret_borrow<py::object>(file)));
    return paths;
}

py::tuple compareModels(const py::object& self, const py::iterable& files, const py::iterable& include, bool missing) {
    const HandleInUse use(libraryAt(self));
    return diagnosticsOf(
        scripts::compareModels(interpreterLock(), libraryOf(use), pathsOf(files), {pathsOf(include), missing}));
}

py::object importBlocks(const std::string& form, const py::iterable& files) {
    const author::Imported imported = scripts::importBlocks(interpreterLock(), form, pathsOf(files));
    return dataClass("Imported")(textObject(imported.text), tupleOf(imported.leftOut));
}

} // namespace

void addAuthoring(py::module_& module) {
    define(
        module, "lint",
        "Tuple of what is wrong or doubtful in a library's own blocks and mappings. Without `thorough`, no mapping is "
        "tried; `architectures` are those whose map libraries are judged, all of the configuration when it is None.",
        lint, py::arg("library"), py::kw_only(), py::arg("thorough") = true, py::arg("budget") = LintOptions().budget,
        py::arg("architectures") = py::none());
    define(module, "guide",
           "Writes a library as pages into a folder, which is replaced as a whole: a WrittenGuide. `parents` gives the "
           "blocks of its parents pages, too, `compare` an older library whose changes are told.",
           guide, py::arg("library"), py::arg("folder"), py::kw_only(), py::arg("parents") = false,
           py::arg("title") = "", py::arg("architectures") = std::vector<std::string>(),
           py::arg("compare") = py::none());
    define(module, "export_blocks",
           "Blocks of a library in a form that other tools read, all of its own without `blocks`, which are names: an "
           "Exported. With `split`, a file for each block or table.",
           exportBlocks, py::arg("library"), py::arg("form"), py::arg("blocks") = py::tuple(), py::kw_only(),
           py::arg("parents") = false, py::arg("split") = false);
    define(
        module, "compare_models",
        "What differs between modules in Verilog files and the blocks of a library that have their names: a tuple of "
        "Diagnostic. `include` are directories for what files include; with `missing`, each block has to have a "
        "model.",
        compareModels, py::arg("library"), py::arg("files"), py::kw_only(), py::arg("include") = py::tuple(),
        py::arg("missing") = false);
    define(module, "import_blocks", "What files in a form describe, as NTL: an Imported. Nothing is loaded.",
           importBlocks, py::arg("form"), py::arg("files"));
}

} // namespace hdnt::python
