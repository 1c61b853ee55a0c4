#include "author/exchange/importBlocks.h"

#include "author/exchange/forms.internal.h"
#include "author/exchange/importForms.internal.h"
#include "author/format/HDNTFormatter.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/platform/InputFile.h"

namespace hdnt::author {

namespace {

struct FormRow {
    ExchangeForm form;
    Imported (*read)(const std::vector<std::string>& files);
};

const std::vector<FormRow>& formRows() {
    static const std::vector<FormRow> rows = {
        {{"json", "json", "a library as ntl export json writes it"}, importJson},
        {{"verilog", "v", "heads of modules, a start for authors; yosys has to be installed"}, importVerilog},
    };
    return rows;
}

} // namespace

std::vector<ExchangeForm> importForms() { return formsOf(formRows()); }

std::string fileText(const std::string& file) {
    const HDNTLimits& limits = HDNTLimits::get();
    std::string text;
    std::string reason;
    if (!platform::readInput(file, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, text, reason))
        throw HEXDataException(file + ": cannot be read: " + reason);
    return text;
}

std::string laidOut(const std::string& file, const std::string& text) {
    std::string result;
    HDNTFormatProblem problem;
    if (!HDNTFormatter::format(text, result, problem)) throw HEXDataException(file + ": " + problem.reason);
    return result;
}

Imported importBlocks(const std::string& form, const std::vector<std::string>& files) {
    return rowNamed(form, formRows()).read(files);
}

} // namespace hdnt::author
