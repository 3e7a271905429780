#pragma once

#include "tests/support/slots.h"

#include <string>
#include <vector>

namespace pyrux::test {

/// A call that takes longer than that of the table of slots.
struct LongestCall {
    std::string operation;
    Call call;
    std::string memory;
    std::string before = {}; ///< An operation that is called first, in the same way.
    bool sameCall = false;   ///< The table's call will do, after the one before.
};

/// Those of a model.
const std::vector<LongestCall>& longestCalls(const std::string& model);

/// Whether the longest time of an operation is a sum that no single device of these tests brings about, such as one
/// that answers every third time it is asked.
bool isSumOnly(const std::string& model, const std::string& operation);

} // namespace pyrux::test
