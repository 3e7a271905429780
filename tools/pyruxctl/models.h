#pragma once

#include "events.h"
#include "operation.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace pyrux::ctl {

/// A name of the catalogue, and the identity that goes with it.
struct Identity {
    std::string_view name;
    std::uint16_t vid;
    std::uint16_t pid;
};

struct EventName {
    std::uint32_t event;
    std::string_view text;
};

/// Everything that pyruxctl knows of a model. To add one: its operations as a list, in the file of its kind.
struct Model {
    std::string_view command; ///< On the command line; also the name of the factory export.
    std::string_view summary;
    std::vector<Identity> identities; ///< Empty: the computer itself, which is always there.
    std::vector<EventName> events;
    std::vector<Operation> operations;
    HostCalls calls;
    DeviceTiming timing{};
    std::vector<std::string_view> monitored{}; ///< The operations that "monitor" repeats; they take no words.

    const Operation* findOperation(std::string_view name) const;
    std::string_view eventText(std::uint32_t event) const;
};

/// The models in the order of their names, and the computer.
const std::vector<Model>& models();

/// The model of a command, or null.
const Model* findModel(std::string_view command);
/// The model of an identity, or null.
const Model* findModel(std::uint32_t vid, std::uint32_t pid);
/// The catalogue's name of an identity; empty when no model has it.
std::string_view findName(std::uint32_t vid, std::uint32_t pid);

/// The models by the kinds of device: a file each in models/, with a row or a function for each model.
namespace models_of {
std::vector<Model> hubs();
std::vector<Model> keyboards();
std::vector<Model> ledMice();
std::vector<Model> plainMice();
std::vector<Model> powerSupplies();
std::vector<Model> strandControllers();
Model sysInfo();
} // namespace models_of

} // namespace pyrux::ctl
