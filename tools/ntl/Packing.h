#pragma once

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ntl {

// Values as bytes and back, between two processes of one program. A class takes part by a function
// fields(archive, object), which hands its members to the archive, the same for both directions.

class Packer {
public:
    template <typename... Values>
    void operator()(const Values&... values) {
        (put(values), ...);
    }
    std::string bytes;

private:
    template <typename Value>
    void put(const Value& value) {
        if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>)
            bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        else fields(*this, const_cast<Value&>(value));
    }
    void put(const std::string& text) {
        put(text.size());
        bytes += text;
    }
    template <typename Value>
    void put(const std::vector<Value>& list) {
        put(list.size());
        for (const Value& one : list) put(one);
    }
};

class Unpacker {
public:
    /// The bytes must outlive it. Too few of them for what is asked: std::runtime_error.
    explicit Unpacker(std::string_view bytes) : rest_(bytes) {}

    template <typename... Values>
    void operator()(Values&... values) {
        (get(values), ...);
    }

private:
    std::string_view next(std::size_t count) {
        if (count > rest_.size()) throw std::runtime_error("the result of a process is incomplete");
        const std::string_view bytes = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return bytes;
    }
    std::size_t number() {
        std::size_t count = 0;
        get(count);
        return count;
    }
    template <typename Value>
    void get(Value& value) {
        if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>)
            std::memcpy(&value, next(sizeof value).data(), sizeof value);
        else fields(*this, value);
    }
    void get(std::string& text) { text = next(number()); }
    template <typename Value>
    void get(std::vector<Value>& list) {
        for (std::size_t left = number(); left > 0; --left) get(list.emplace_back());
    }

    std::string_view rest_;
};

} // namespace ntl
