#include "models.h"

#include <algorithm>
#include <iterator>

namespace pyrux::ctl {

namespace {

const Identity* findIdentity(const Model& model, std::uint32_t vid, std::uint32_t pid)
{
    const auto found = std::ranges::find_if(model.identities,
                                            [=](const Identity& i) { return i.vid == vid && i.pid == pid; });
    return found == model.identities.end() ? nullptr : &*found;
}

} // namespace

const std::vector<Model>& models()
{
    static const std::vector<Model> all = [] {
        std::vector<Model> models;
        for (const auto kind : {models_of::hubs, models_of::keyboards, models_of::ledMice,
                                models_of::plainMice, models_of::powerSupplies, models_of::strandControllers})
            std::ranges::move(kind(), std::back_inserter(models));
        std::ranges::sort(models, {}, &Model::command);
        models.push_back(models_of::sysInfo());
        return models;
    }();
    return all;
}

const Operation* Model::findOperation(std::string_view name) const
{
    const auto found = std::ranges::find(operations, name, &Operation::name);
    return found == operations.end() ? nullptr : &*found;
}

std::string_view Model::eventText(std::uint32_t event) const
{
    const auto found = std::ranges::find(events, event, &EventName::event);
    return found == events.end() ? "unknown event" : found->text;
}

const Model* findModel(std::string_view command)
{
    const auto found = std::ranges::find(models(), command, &Model::command);
    return found == models().end() ? nullptr : &*found;
}

const Model* findModel(std::uint32_t vid, std::uint32_t pid)
{
    const auto found =
        std::ranges::find_if(models(), [=](const Model& model) { return findIdentity(model, vid, pid); });
    return found == models().end() ? nullptr : &*found;
}

std::string_view findName(std::uint32_t vid, std::uint32_t pid)
{
    const Model* const model = findModel(vid, pid);
    return model ? findIdentity(*model, vid, pid)->name : "";
}

} // namespace pyrux::ctl
