// Mappings applied to property values.
#include "bindings/python/Define.h"
#include "bindings/python/Functions.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/PropertyFacts.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/Words.h"

#include <optional>

namespace hdnt::python {

namespace {

using Expansion = HDNTExpansion;

py::object pythonValue(const Expansion::Value& value) { return py::reinterpret_steal<py::object>(toPython(value)); }

/// Turns an expansion into instances of the classes of hdnt._data.
class Result {
public:
    explicit Result(Handle* library) : library_(library) {}

    py::object of(const Expansion& expansion) {
        return dataClass("Expansion")(
            list(expansion.levels(), [&](const auto& level) { return this->level(level); }),
            list(expansion.problems(), [&](const auto& problem) { return this->problem(problem); }));
    }

private:
    template <typename Items, typename Convert>
    static py::tuple list(const Items& items, Convert&& convert) {
        py::tuple all(items.size());
        for (size_t i = 0; i < items.size(); ++i) all[i] = convert(items[i]);
        return all;
    }

    static py::object place(const yyltype& at) {
        return at.fileLine == 0 && !at.fileName ? py::object(py::none())
                                                : py::reinterpret_steal<py::object>(toPython(at));
    }
    static py::object index(size_t number) {
        return number == Expansion::none ? py::object(py::none()) : py::int_(number);
    }
    static py::object problem(const Expansion::Problem& problem) {
        return dataClass("Problem")(textObject(problem.message), place(problem.location), py::int_(problem.level));
    }

    py::object origin(const Expansion::Origin& origin) {
        return originClass_(place(origin.location), index(origin.branch));
    }
    py::object property(const Expansion::PropertyValue& value) {
        return dataClass("PropertyValue")(orNone(value.pin), textObject(value.name), pythonValue(value.value),
                                          origin(value.origin));
    }
    py::object properties(const std::vector<Expansion::PropertyValue>& values) {
        return list(values, [&](const auto& value) { return property(value); });
    }
    py::object instance(const Expansion::Instance& instance) {
        return dataClass("ExpandedInstance")(textObject(instance.name), textObject(instance.type),
                                             block(instance.block), properties(instance.properties),
                                             index(instance.level), origin(instance.origin));
    }
    py::object level(const Expansion::Level& level) {
        return dataClass("Level")(
            block(level.block), textObject(level.block->getName()), textObject(level.path),
            textObject(words::sections.wordOf(level.section)), index(level.outer), place(level.location),
            !level.location.fileName,
            list(level.branches, [&](const auto& b) { return dataClass("Branch")(b.taken, origin(b.origin)); }),
            list(level.instances, [&](const auto& item) { return instance(item); }),
            list(level.signals,
                 [&](const auto& s) { return dataClass("ExpandedSignal")(textObject(s.name), origin(s.origin)); }),
            list(level.connections,
                 [&](const auto& c) {
                     return dataClass("Connection")(textObject(c.signal), orNone(c.instance), textObject(c.pin),
                                                    c.inverted, origin(c.origin));
                 }),
            properties(level.pinProperties), list(level.calls, [&](const auto& c) {
                return dataClass("ExpandedCall")(textObject(c.name), list(c.arguments, pythonValue), c.made,
                                                 origin(c.origin));
            }));
    }

    // A block of the common library need not be above the one that is expanded.
    py::object block(HDNTBlock* block) {
        if (!block) return py::none();
        if (libraryOf(*block, library_)) return py::reinterpret_steal<py::object>(wrap(block, library_));
        const auto owner = py::reinterpret_steal<py::object>(wrapLibrary(*block->getLibrary()));
        return py::reinterpret_steal<py::object>(wrap(block, reinterpret_cast<Handle*>(owner.ptr())));
    }

    Handle* library_;
    py::object originClass_ = dataClass("Origin");
};

void setProperties(Expansion& expansion, const HDNTBlock& block, const py::dict& values) {
    for (const auto& [key, value] : values) {
        const std::string name = textOf(key);
        const auto refusal = [&, &given = value](const std::optional<Value>& plain = {}) {
            return scripts::refusalText(block, name, plain, writtenText(given));
        };
        const bool isPlain = PyLong_Check(value.ptr()) || PyFloat_Check(value.ptr()) || PyUnicode_Check(value.ptr());
        if (!isPlain) throw py::type_error(refusal());
        const std::optional<Value> plain = valueFor(block.getPropertyByName(name), value);
        std::string reason;
        if (!plain || !expansion.setProperty(name, *plain, reason)) throw py::value_error(refusal(plain));
    }
}

py::object expand(const py::object& self, const py::object& values, const py::iterable& connected, bool deep,
                  const std::string& architecture, const py::object& functions, const py::kwargs& more) {
    Handle* const handle = handleOf(self, typeOf(HDNTNodeKind::Block));
    const HandleInUse use(handle);
    auto& block = use.as<HDNTBlock>();
    if (deep || !block.hasOwnNetlist()) scripts::Reading::mustNotAskMapLibrary(block);
    Expansion expansion(block, architecture);
    if (!values.is_none()) setProperties(expansion, block, py::dict(values));
    setProperties(expansion, block, more);
    for (const py::handle pin : connected) {
        std::string reason;
        if (!expansion.connect(textOf(pin), reason)) throw py::value_error(reason);
    }
    PythonFunctions table(functions);
    py::object result;
    withErrorsOf(table, block.getName(), LoadSection::Changes, [&] {
        expansion.expand(deep);
        const InterpreterLock lock;
        result = Result(use.library()).of(expansion);
    });
    return result;
}

} // namespace

void addExpanding(py::module_& module) {
    define(module.attr("Block"), "expand",
           "What the mapping makes of these property values, given by name or as a dict: an Expansion. `connected` "
           "names pins that are connected, `deep` expands the instances in turn, `functions` answers calls by name.",
           expand, py::arg("values") = py::none(), py::kw_only(), py::arg("connected") = py::tuple(),
           py::arg("deep") = false, py::arg("architecture") = "", py::arg("functions") = py::none());
}

} // namespace hdnt::python
