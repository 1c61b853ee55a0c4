#pragma once

#include "author/exchange/exportBlocks.h"
#include "author/lint/nearestNames.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

#include <string>
#include <vector>

namespace hdnt::author {

// Of rows that each have a `form`.

template <typename Row>
std::vector<ExchangeForm> formsOf(const std::vector<Row>& rows) {
    std::vector<ExchangeForm> forms;
    for (const Row& row : rows) forms.push_back(row.form);
    return forms;
}

/// Throws HEXDataException, which names those near to it, when there is none of that name.
template <typename Row>
const Row& rowNamed(const std::string& name, const std::vector<Row>& rows) {
    std::vector<std::string> names;
    for (const Row& row : rows) {
        if (name == row.form.name) return row;
        names.emplace_back(row.form.name);
    }
    const std::string near = question(name, names);
    throw HEXDataException("no form '" + name + "'" + (near.empty() ? ": " + platform::joined(names, ", ") : near));
}

} // namespace hdnt::author
