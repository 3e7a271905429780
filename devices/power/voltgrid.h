#pragma once

#include "devices/power/power_supply.h"
#include "pyrux/voltgrid.h"

#include <string>

namespace pyrux {

class VOLTGRID : public PowerSupplyOf<std::uint16_t> {
public:
    static constexpr const ModelRow& model = modelRow("voltgrid");
    explicit VOLTGRID(const std::string& path, Clock& clock = Clock::current());
};

class PYRUX_VOLTGRID final : public SupplyHost<VOLTGRID, PYRUX_VOLTGRID_Base> {
public:
    using SupplyHost::SupplyHost;
};

} // namespace pyrux
