#include "operation.h"

#include "text.h"

namespace pyrux::ctl {

bool Argument::isWord() const
{
    return direction == Direction::in || (direction == Direction::inout && type->isPlain());
}

std::vector<Word> Operation::words() const
{
    std::vector<Word> words;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Argument& argument = arguments[i];
        if (argument.isWord())
            words.push_back({i, argument.name, argument.type, 0});
        for (const std::string_view key : argument.keys) {
            const Field& field = *findField(*argument.type, key);
            words.push_back({i, key, field.type, field.offset});
        }
    }
    return words;
}

Operation Operation::waiting(int requests, int writes) const
{
    return waiting({requests, writes}, {requests, writes});
}

Operation Operation::waiting(Steps all, Steps unanswered) const
{
    Operation same = *this;
    same.waits = {.all = all, .unanswered = unanswered};
    return same;
}

std::string Operation::synopsis() const
{
    std::string text(name);
    for (const Word& word : words())
        text += " " + upperCase(word.name);
    std::string outputs;
    for (const Argument& argument : arguments)
        if (argument.isOutput())
            outputs += (outputs.empty() ? " -> " : ", ") + std::string(argument.name);
    return text + outputs;
}

} // namespace pyrux::ctl
