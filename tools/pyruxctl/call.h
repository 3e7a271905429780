#pragma once

#include "operation.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>

namespace pyrux::ctl {

/// Where the word of a record or an array may take its JSON from: "@FILE", or "-" for the standard input.
struct Documents {
    std::filesystem::path folder; ///< Of files that are named without one.
    bool standardInput = true;
};

/// Reads the document that such a word stands for; any other word is the document itself. Throws UsageError.
std::string readDocument(const std::string& word, const Documents& documents);

/// An operation with its arguments, ready to be called.
class Call {
public:
    /// Takes the arguments as words of the command line. Throws UsageError when they do not fit.
    Call(const Operation& operation, const std::vector<std::string>& words, const Documents& documents);

    /// @return the operation's result code
    std::int32_t on(void* host) { return operation.call(host, blocks.data()); }

    /// What the last call gave, by the names of its outputs.
    Json outputs() const;

private:
    const Operation& operation;
    std::vector<std::unique_ptr<std::byte[]>> memory;
    std::vector<std::byte*> blocks; ///< The memory of each argument.
};

} // namespace pyrux::ctl
