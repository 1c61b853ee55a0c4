#pragma once

#include <string>

namespace ntl {

/// Makes something from the option tables: "man", "bash", "zsh" or "fish". Throws Failure(Unusable) for another kind.
std::string generate(const std::string& kind);

} // namespace ntl
