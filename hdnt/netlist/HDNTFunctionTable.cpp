#include "hdnt/netlist/HDNTFunctionTable.h"

static thread_local HDNTFunctionTable::Scope* innermost = nullptr;

HDNTFunctionTable::HDNTFunctionTable() = default;
HDNTFunctionTable::~HDNTFunctionTable() = default;

HDNTFunctionTable& HDNTFunctionTable::global() {
    static auto* const table = new HDNTFunctionTable;
    return *table;
}

void HDNTFunctionTable::add(const std::string& name, Fn fn) {
    const std::lock_guard lock(mutex_);
    functions_[name] = std::move(fn);
}

HDNTFunctionTable::Fn HDNTFunctionTable::find(const std::string& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = functions_.find(name);
    return found == functions_.end() ? Fn() : found->second;
}

HDNTFunctionTable::Fn HDNTFunctionTable::findInForce(const std::string& name) {
    for (const Scope* scope = innermost; scope; scope = scope->outer_)
        if (Fn fn = scope->table_.find(name)) return fn;
    return global().find(name);
}

HDNTFunctionTable::Scope::Scope(HDNTFunctionTable& table) : table_(table), outer_(innermost) { innermost = this; }
HDNTFunctionTable::Scope::~Scope() { innermost = outer_; }
