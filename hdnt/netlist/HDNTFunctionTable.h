#pragma once

#include "hdnt/platform/Export.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

class HDNTFunctionCall;
class HDNTValue;

/// Implementations of functions that mappings call, by name. A library declares the functions it uses; the host
/// supplies what they do.
class HDNT_API HDNTFunctionTable {
public:
    /// Gets the call and the values of its arguments, borrowed; gives the result. Null is for calls that are
    /// statements. What it throws passes through the evaluation.
    using Fn = std::function<std::unique_ptr<HDNTValue>(const HDNTFunctionCall&, const std::vector<const HDNTValue*>&)>;

    HDNTFunctionTable();
    ~HDNTFunctionTable();
    HDNTFunctionTable(const HDNTFunctionTable&) = delete;
    HDNTFunctionTable& operator=(const HDNTFunctionTable&) = delete;

    /// The table of the process. Never destroyed.
    static HDNTFunctionTable& global();
    /// Adds or replaces an implementation. Any thread.
    void add(const std::string& name, Fn fn);
    /// A copy of the implementation, empty when there is none. Any thread.
    Fn find(const std::string& name) const;
    /// What a call in this thread finds: in the scopes in force, the innermost first, then in the global table.
    static Fn findInForce(const std::string& name);

    /// Lays a table over the global one for as long as the object lives, in this thread.
    class HDNT_API Scope {
    public:
        explicit Scope(HDNTFunctionTable& table);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        friend class HDNTFunctionTable;
        HDNTFunctionTable& table_;
        Scope* outer_;
    };

private:
    mutable std::mutex mutex_;
    std::unordered_map<std::string, Fn> functions_;
};
