#include "author/exchange/BlockJson.h"
#include "author/exchange/yosysOutput.internal.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <map>

namespace hdnt::author {

namespace {

using Kind = ModuleParameter::Kind;

// Bytes beyond ASCII come as they are, or with the sign that they had; JSON has them as characters here.
std::string withCharacters(const std::string& json) {
    static constexpr std::string_view signedByte = "\\uFFFFFF";
    std::string text;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const auto byte = static_cast<unsigned char>(json[i]);
        if (json[i] == '\\' && json.compare(i, signedByte.size(), signedByte) == 0) {
            text += "\\u00";
            i += signedByte.size() - 1;
        } else if (json[i] == '\\' && i + 1 < json.size()) {
            text.append(json, i++, 2);
        } else if (byte < 0x80) {
            text += json[i];
        } else {
            text += static_cast<char>(0xc0U | byte >> 6U);
            text += static_cast<char>(0x80U | (byte & 0x3fU));
        }
    }
    return text;
}

std::string bytesOf(const std::string& characters) {
    std::string bytes;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const auto first = static_cast<unsigned char>(characters[i]);
        if (first < 0x80 || i + 1 == characters.size()) bytes += characters[i];
        else bytes += static_cast<char>((first & 0x03U) << 6U | (static_cast<unsigned char>(characters[++i]) & 0x3fU));
    }
    return bytes;
}

// The escape stays where the name would look like one of the tool's own.
std::string nameOf(const std::string& key) {
    const std::string name = bytesOf(key);
    const bool isEscaped =
        name.size() > 1 && name[0] == '\\' && std::string_view("$\\0123456789").find(name[1]) != std::string_view::npos;
    return isEscaped ? name.substr(1) : name;
}

// In front of the name of a module that waits for values of its parameters.
constexpr std::string_view deferredMark = "$abstract\\";

bool isBits(std::string_view text) { return text.find_first_not_of("01xz") == text.npos; }

// A blank is added to texts that would look like bits.
void setDefault(ModuleParameter& parameter, const std::string& json) {
    parameter.value = bytesOf(json);
    const std::size_t last = parameter.value.find_last_not_of(' ');
    const bool hasBlank = last + 1 < parameter.value.size();
    parameter.kind = !parameter.value.empty() && isBits(parameter.value) ? Kind::Bits : Kind::Text;
    if (hasBlank && isBits(std::string_view(parameter.value).substr(0, last + 1))) parameter.value.pop_back();
}

std::optional<double> numberIn(std::string_view text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end ? std::optional(value) : std::nullopt;
}

int numberOf(const Json& object, const char* key) { return object.value(key, 0); }

std::optional<std::pair<int, int>> rangeOf(const Json& port, bool isDeclared) {
    const int low = numberOf(port, "offset");
    const int high = low + static_cast<int>(port.at("bits").size()) - 1;
    if (high == low && low == 0 && !isDeclared) return std::nullopt;
    return numberOf(port, "upto") != 0 ? std::pair(low, high) : std::pair(high, low);
}

/// A line of the dump: "AST_KIND <place> str='\name' facts".
struct DumpLine {
    explicit DumpLine(std::string_view line) {
        depth = line.find_first_not_of(' ');
        if (depth == line.npos) return;
        line.remove_prefix(depth);
        const std::size_t open = line.find(" <");
        const std::size_t close = line.find("> ", open);
        if (open == line.npos) return;
        kind = line.substr(0, open);
        const std::size_t end = std::min(close, line.rfind('>'));
        if (end == line.npos || end < open) return;
        place = line.substr(open + 2, end - open - 2);
        facts = line.substr(end + 1);
        static constexpr std::string_view mark = " str='\\";
        if (facts.substr(0, mark.size()) != mark) return;
        name = facts.substr(mark.size(), facts.find(' ', mark.size()) - mark.size());
        if (!name.empty()) name.remove_suffix(1);
    }
    bool says(std::string_view word) const { return facts.find(word) != facts.npos; }

    bool saysInteger() const { return says(" signed") && says(" range=[31:0]"); }

    std::size_t depth = 0;
    std::string_view kind, place, name, facts;
};

/// The ports with ranges, and the parameters, of each module.
class Dump {
public:
    Dump(const std::string& text, const YosysTexts& texts) : texts_(texts) {
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            take(DumpLine(std::string_view(text).substr(begin, end - begin)));
            begin = end + 1;
        }
    }

    struct Module {
        std::vector<ModuleParameter> parameters;
        std::map<std::string, bool> hasRange; ///< by port
        std::size_t order = 0;
    };
    const Module& of(const std::string& name) const {
        static const Module none;
        const auto found = modules_.find(name);
        return found == modules_.end() ? none : found->second;
    }

private:
    static constexpr std::size_t moduleDepth = 4;
    static constexpr std::size_t childDepth = moduleDepth + 4;

    void take(const DumpLine& line) {
        if (line.depth == moduleDepth && line.kind == "AST_MODULE") {
            module_ = &(modules_[std::string(line.name)] = {});
            module_->order = modules_.size();
            parameter_ = nullptr;
            hasRange_ = nullptr;
        }
        if (!module_) return;
        if (line.depth == moduleDepth + 2) begin(line);
        else if (line.depth == childDepth && parameter_) takeOfParameter(line);
        else if (line.depth == childDepth && hasRange_) *hasRange_ = *hasRange_ || line.kind == "AST_RANGE";
    }

    void begin(const DumpLine& line) {
        parameter_ = nullptr;
        hasRange_ = nullptr;
        const std::string name(line.name);
        if (line.kind == "AST_WIRE") hasRange_ = &module_->hasRange[name];
        if (line.kind != "AST_PARAMETER") return;
        parameter_ = &module_->parameters.emplace_back();
        parameter_->name = name;
        parameter_->place = texts_.placeOf(yosysPlaceOf(line.place), name);
        isInteger_ = line.saysInteger();
        hasValue_ = false;
    }

    // Its default, and then its type.
    void takeOfParameter(const DumpLine& line) {
        if (line.kind == "AST_REALVALUE" && !hasValue_) setReal(line);
        parameter_->isDeclared = hasValue_;
        parameter_->isInteger = isInteger_ || (!hasValue_ && line.kind == "AST_CONSTANT" && line.saysInteger());
        hasValue_ = true;
    }

    // The dump has seven digits; the text has all, where it is a number and not something to be reckoned.
    void setReal(const DumpLine& line) {
        static constexpr std::string_view mark = " real=";
        const std::size_t at = line.facts.find(mark);
        parameter_->kind = Kind::Real;
        if (at != line.facts.npos) parameter_->real = numberIn(line.facts.substr(at + mark.size())).value_or(0);
        std::string text(texts_.textAt(yosysPlaceOf(line.place)));
        std::erase(text, '_');
        const std::optional<double> value = numberIn(text);
        parameter_->isExact = value && realDigits(*value) == realDigits(parameter_->real);
        if (parameter_->isExact) parameter_->real = *value;
    }

    const YosysTexts& texts_;
    std::map<std::string, Module> modules_;
    Module* module_ = nullptr;
    ModuleParameter* parameter_ = nullptr;
    bool* hasRange_ = nullptr;
    bool isInteger_ = false; ///< as the parameter is declared
    bool hasValue_ = false;
};

std::vector<ModulePort> portsOf(const Json& module, const Dump::Module& dump, const YosysTexts& texts) {
    std::vector<ModulePort> ports;
    for (const auto& [key, json] : module.at("ports").items()) {
        ModulePort& port = ports.emplace_back();
        port.name = nameOf(key);
        port.direction = json.at("direction");
        if (port.direction == "inout") port.direction = "bidir";
        port.width = json.at("bits").size();
        const auto hasRange = dump.hasRange.find(port.name);
        port.range = rangeOf(json, hasRange != dump.hasRange.end() && hasRange->second);
        const Json& net = module.at("netnames").at(key);
        port.place = texts.placeOf(yosysPlaceOf(net.at("attributes").value("src", "")), port.name);
    }
    return ports;
}

// A default that the dump has no parameter for has no place.
std::vector<ModuleParameter> parametersOf(const Json& module, const Dump::Module& dump) {
    std::vector<ModuleParameter> parameters = dump.parameters;
    const Json defaults = module.value("parameter_default_values", Json::object());
    for (const auto& [key, json] : defaults.items()) {
        const std::string name = nameOf(key);
        auto found = std::ranges::find(parameters, name, &ModuleParameter::name);
        if (found == parameters.end()) {
            found = parameters.emplace(found);
            found->name = name;
        }
        setDefault(*found, json);
    }
    return parameters;
}

} // namespace

std::string realDigits(double value) {
    std::array<char, 40> digits;
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::scientific, 6);
    return std::string(digits.data(), end.ptr);
}

YosysPlace yosysPlaceOf(std::string_view text) {
    YosysPlace place;
    const std::size_t colon = text.rfind(':');
    if (colon == text.npos) return place;
    place.file = text.substr(0, colon);
    int endLine = 0;
    const std::string numbers(text.substr(colon + 1));
    const int read =
        std::sscanf(numbers.c_str(), "%d.%d-%d.%d", &place.line, &place.column, &endLine, &place.endColumn);
    if (read < 4 || endLine != place.line) place.column = place.endColumn = 0;
    return place;
}

std::vector<Module> modulesOf(const std::string& json, const std::string& dump, const YosysTexts& texts) {
    const Json document = Json::parse(withCharacters(json), nullptr, false);
    if (!document.is_object() || !document.contains("modules")) throw HEXDataException("yosys wrote no modules");
    const Dump facts(dump, texts);
    std::vector<Module> modules;
    try {
        for (const auto& [key, one] : document.at("modules").items()) {
            Module& module = modules.emplace_back();
            module.isDeferred = key.starts_with(deferredMark);
            module.name = nameOf(module.isDeferred ? key.substr(deferredMark.size()) : key);
            module.hasParametricPorts = one.at("attributes").contains("dynports");
            module.ports = portsOf(one, facts.of(module.name), texts);
            module.parameters = parametersOf(one, facts.of(module.name));
            module.place = texts.placeOf(yosysPlaceOf(one.at("attributes").value("src", "")), module.name);
        }
    } catch (const Json::exception& error) {
        throw HEXDataException(std::string("yosys wrote another JSON than is known: ") + error.what());
    }
    std::ranges::stable_sort(modules, {}, [&](const Module& module) { return facts.of(module.name).order; });
    return modules;
}

} // namespace hdnt::author
