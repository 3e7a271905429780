#include "fuzz/support/argument_types.h"

#include "tools/pyruxctl/models.h"

#include <algorithm>

namespace pyrux::fuzz {

const std::vector<const ctl::Type*>& argumentTypes()
{
    static const auto& all = *[] {
        auto* found = new std::vector<const ctl::Type*>;
        for (const ctl::Model& model : ctl::models())
            for (const ctl::Operation& operation : model.operations)
                for (const ctl::Argument& argument : operation.arguments)
                    if (!std::ranges::count(*found, argument.type))
                        found->push_back(argument.type);
        return found;
    }();
    return all;
}

} // namespace pyrux::fuzz
