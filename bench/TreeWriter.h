#pragma once

#include "bench/Writers.h"

namespace bench {

/// The same content as a tree of groups, lists and values: as JSON or as libconfig text.
class TreeWriter : public Writer {
public:
    enum class Syntax { Json, Config };

    explicit TreeWriter(Syntax syntax) : json_(syntax == Syntax::Json) {}

    void begin(std::string& out, const std::vector<Function>& functions) override;
    void write(std::string& out, const Block& block) override;
    void end(std::string& out) override;

private:
    enum class Shape { Group, List, Array };

    void open(Shape shape);
    void close();
    void element();
    void key(const char* name);
    void string(const std::string& text);
    void plain(const std::string& text);
    void field(const char* name, const std::string& text);
    void flag(const char* name, bool value);
    void range(const IndexRange& range);

    void pins(const std::vector<Pin>& pins);
    void properties(const std::vector<Property>& properties);
    void property(const Property& property);
    void value(const Property& property, const std::string& text);
    void references(const std::vector<PinRef>& pins);
    void statements(const char* name, const std::vector<Statement>& statements);
    void statement(const Statement& statement);

    struct Level {
        Shape shape;
        bool first = true;
    };

    bool json_;
    std::string* out_ = nullptr;
    std::vector<Level> levels_;
};

/// Not the content, but what the library reads beside it: a group a block, a text a property.
class DescriptionWriter : public Writer {
public:
    void begin(std::string&, const std::vector<Function>&) override {}
    void write(std::string& out, const Block& block) override;
    void end(std::string&) override {}
};

} // namespace bench
