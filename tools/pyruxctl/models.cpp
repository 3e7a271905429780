#include "models.h"

#include <algorithm>

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
    static const std::vector<Model> all{
        models_of::glow2(),       models_of::glow_hub(), models_of::playdock(), models_of::psuCtrl(),
        models_of::qw210(),       models_of::qw220(),    models_of::rd110(),    models_of::rd210(),
        models_of::rd215(),       models_of::rd230(),    models_of::rd240(),    models_of::strandhub(),
        models_of::strandhubv2(), models_of::tint_hub(), models_of::voltgrid(), models_of::sysInfo(),
    };
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
