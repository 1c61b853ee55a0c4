#pragma once

#include <functional>
#include <string>

class HDNTProperty;

namespace hdnt::writer {

class Line;

/// Takes what cannot be written in NTL. Internal.
using CannotWrite = std::function<void(const std::string& what)>;

/// Appends the declaration in its printed form, without indent and newline.
void appendPrinted(Line& line, const HDNTProperty& property);

/// Appends the declaration so that it reads back to the same property. What no text can say goes to `cannotWrite`.
void appendSource(Line& line, const HDNTProperty& property, const CannotWrite& cannotWrite);

/// Appends a text in quotes; one with a quote or a line break in it cannot be read back.
void appendSourceText(Line& line, const std::string& text, const CannotWrite& cannotWrite);
/// Appends a number that reads back to the same.
void appendSourceNumber(Line& line, double value, const CannotWrite& cannotWrite);

} // namespace hdnt::writer
