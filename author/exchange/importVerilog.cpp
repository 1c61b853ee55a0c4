// Modules as blocks: what their heads say, with marks where authors have to go on.
#include "author/exchange/NtlWriter.internal.h"
#include "author/exchange/importForms.internal.h"
#include "author/exchange/parameterValues.internal.h"
#include "author/exchange/verilogModules.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTConvert.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace hdnt::author {

namespace {

using Kind = ModuleParameter::Kind;
using platform::printable;

constexpr int highestBit = 32767;
constexpr std::size_t mostPins = 65536;

/// Why something cannot be said in NTL.
struct Refusal {
    std::string why;
};

bool isControl(char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }

bool isInName(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

void requireName(const std::string& name) {
    if (!std::ranges::all_of(name, isInName)) throw Refusal{"names of NTL are letters, digits and _"};
}

Json busOf(const ModulePort& port) {
    requireName(port.name);
    Json bus;
    bus["baseName"] = port.name;
    bus["direction"] = port.direction;
    if (!port.range) return bus;
    const auto [low, high] = std::minmax(port.range->first, port.range->second);
    if (low < 0) throw Refusal{"bits below 0"};
    if (high > highestBit) throw Refusal{"bits above " + std::to_string(highestBit)};
    bus["range"] = {port.range->first, port.range->second};
    return bus;
}

// Digits alone, in the radix that people write such a width in.
void setBits(Json& property, const ModuleParameter& parameter) {
    const int width = static_cast<int>(parameter.value.size());
    const bool isHex = width % 4 == 0 || width > 8;
    std::string digits = parameter.value;
    if (digits.find_first_not_of("01") != digits.npos) throw Refusal{"its default has bits that are no number"};
    if (isHex) HUTConvert::binaryToHex(digits, digits, width);
    property["type"] = isHex ? "bithex" : "bitbinary";
    property["bitWidth"] = width;
    property["default"] = digits;
}

void setText(Json& property, const std::string& text) {
    if (text.find('"') != text.npos || std::ranges::any_of(text, isControl))
        throw Refusal{"its default has a character that no text of NTL has"};
    property["type"] = "string";
    property["default"] = text;
}

Json propertyOf(const ModuleParameter& parameter) {
    requireName(parameter.name);
    Json property;
    property["name"] = parameter.name;
    if (parameter.kind == Kind::Text) {
        setText(property, parameter.value);
    } else if (parameter.kind == Kind::Real) {
        property["type"] = "double";
        property["default"] = parameter.real;
        if (!parameter.isExact) property["remarks"] = {"TODO: the default is reckoned; here are seven digits of it."};
    } else if (const auto number = wordIn(parameter); parameter.isInteger && number) {
        property["type"] = "int";
        property["default"] = *number;
    } else if (parameter.value == "0" || parameter.value == "1") {
        property["type"] = "bool";
        property["default"] = parameter.value == "1";
    } else {
        setBits(property, parameter);
    }
    return property;
}

class Importer {
public:
    void add(const std::string& file) {
        file_ = file;
        const ModuleFile read = readModules(file, {});
        for (const Diagnostic& refusal : read.refusals)
            throw HEXDataException(describe(refusal.place) + ": " + textOf(refusal));
        if (read.modules.empty()) leftOut_.push_back(printable(file) + ": has no module");
        for (const Module& module : read.modules)
            attempt(module.place, printable(module.name), [&] { addBlock(module); });
    }

    Imported finish(const std::string& firstFile) {
        Json library;
        library["library"] = std::filesystem::path(firstFile).stem().string();
        for (char& c : library["library"].get_ref<std::string&>())
            if (!isInName(c)) c = '_';
        library["blocks"] = std::move(blocks_);
        NtlWriter writer;
        writer.addLibrary(JsonItem(library));
        for (const std::string& one : writer.refusals()) leftOut_.push_back(one);
        return {laidOut(firstFile, writer.text()), std::move(leftOut_)};
    }

private:
    template <typename Action>
    void attempt(const Place& place, const std::string& name, Action&& action) {
        try {
            action();
        } catch (const Refusal& refusal) {
            leftOut_.push_back(describe(place) + ": " + name + ": " + refusal.why);
        }
    }

    // Case is none of a name's.
    static void requireNew(std::set<std::string>& names, const std::string& name, const char* of) {
        if (!names.insert(HSTStringUtils::to_upper_copy(name)).second)
            throw Refusal{std::string(of) + " of that name is there before, case aside"};
    }

    void addBlock(const Module& module) {
        requireName(module.name);
        if (module.isDeferred) throw Refusal{deferredReason};
        requireNew(names_, module.name, "a module");
        Json block;
        block["name"] = module.name;
        block["remarks"] = remarksOf(module);
        block["buses"] = Json::array();
        block["properties"] = Json::array();
        addPins(module, block["buses"]);
        std::set<std::string> properties;
        for (const ModuleParameter& parameter : module.parameters)
            attempt(parameter.place, printable(module.name) + ": " + printable(parameter.name), [&] {
                Json property = propertyOf(parameter);
                requireNew(properties, parameter.name, "a parameter");
                block["properties"].push_back(std::move(property));
            });
        if (block["buses"].empty()) throw Refusal{"a block has a pin at least"};
        blocks_.push_back(std::move(block));
    }

    void addPins(const Module& module, Json& buses) {
        std::size_t pins = 0;
        for (const ModulePort& port : module.ports)
            attempt(port.place, printable(module.name) + ": " + printable(port.name), [&] {
                Json bus = busOf(port);
                if (pins + port.width > mostPins) throw Refusal{"more than " + std::to_string(mostPins) + " pins"};
                pins += port.width;
                buses.push_back(std::move(bus));
            });
    }

    Json remarksOf(const Module& module) const {
        Json remarks = {"From " + printable(describe(module.place)) + "."};
        remarks.push_back("TODO: group; types of pins, such as clock, and what those are tied to that are open;");
        remarks.push_back("values that properties take; descriptions; mapping.");
        if (module.hasParametricPorts)
            remarks.push_back("TODO: widths follow from parameters; here they are those of the defaults.");
        return remarks;
    }

    std::string file_;
    Json blocks_ = Json::array();
    std::set<std::string> names_;
    std::vector<std::string> leftOut_;
};

} // namespace

Imported importVerilog(const std::vector<std::string>& files) {
    Importer importer;
    for (const std::string& file : files) importer.add(file);
    return importer.finish(files.empty() ? "imported" : files.front());
}

} // namespace hdnt::author
