#pragma once

#include "devices/host_object.h"

#include <string>

/// @file
/// Models with nothing of their own: what tells them from each other is a row of their family's traits, which
/// begins with the model row. PYRUX_FACTORY makes the rest of it.

namespace pyrux {

/// The protocol class that a row makes of its family's.
/// @tparam row  of static storage; its first field is `model`
template <class Family, const auto& row>
class Variant final : public Family {
public:
    static constexpr const ModelRow& model = row.model;
    explicit Variant(const std::string& path) : Family(path, row) {}
};

/// The host class that it makes of its family's.
template <template <class, class> class FamilyHost, class Device, class Interface>
class VariantHost final : public FamilyHost<Device, Interface> {
public:
    using FamilyHost<Device, Interface>::FamilyHost;
};

} // namespace pyrux
