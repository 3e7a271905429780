#include "call.h"

#include "failure.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace pyrux::ctl {

namespace {

std::string readAll(std::istream& stream)
{
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

std::string readDocument(const std::string& word, const Documents& documents)
{
    if (word == "-") {
        if (!documents.standardInput)
            throw UsageError("\"-\" is the script itself here, use @FILE");
        return readAll(std::cin);
    }
    if (!word.starts_with('@'))
        return word;
    const auto file = documents.folder / word.substr(1);
    std::ifstream stream(file);
    if (!stream)
        throw UsageError("cannot read " + file.string());
    return readAll(stream);
}

Call::Call(const Operation& called, const std::vector<std::string>& words, const Documents& documents)
    : operation(called)
{
    const std::vector<Word> wanted = operation.words();
    if (words.size() != wanted.size())
        throw UsageError("takes " + std::to_string(wanted.size()) +
                         (wanted.size() == 1 ? " argument" : " arguments") + ", not " +
                         std::to_string(words.size()));
    for (const Argument& argument : operation.arguments) { // operator new aligns for every type
        memory.push_back(std::make_unique<std::byte[]>(argument.type->size));
        blocks.push_back(memory.back().get());
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        const Word& word = wanted[i];
        fromWord(*word.type, word.type->isPlain() ? words[i] : readDocument(words[i], documents),
                 blocks[word.argument] + word.offset, std::string(word.name));
    }
}

Json Call::outputs() const
{
    Json outputs = Json::object();
    for (std::size_t i = 0; i < operation.arguments.size(); ++i)
        if (const Argument& argument = operation.arguments[i]; argument.isOutput())
            outputs[std::string(argument.name)] = toJson(*argument.type, blocks[i]);
    return outputs;
}

} // namespace pyrux::ctl
