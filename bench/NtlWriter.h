#pragma once

#include "bench/Writers.h"

namespace bench {

class NtlWriter : public Writer {
public:
    /// With `lineComments`, comments run to the end of the line, else they are closed.
    explicit NtlWriter(bool lineComments) : lineComments_(lineComments) {}

    void begin(std::string& out, const std::vector<Function>& functions) override;
    void write(std::string& out, const Block& block) override;
    void end(std::string& out) override { out += "}\n"; }

private:
    std::string comment(const std::string& text) const;
    void writePin(std::string& out, const Pin& pin) const;
    void writeProperty(std::string& out, const Property& property, int indent) const;
    void writeStatements(std::string& out, const std::vector<Statement>& statements, int indent) const;
    void writeStatement(std::string& out, const Statement& statement, int indent) const;

    bool lineComments_;
};

} // namespace bench
