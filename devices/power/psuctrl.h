#pragma once

#include "devices/power/power_supply.h"
#include "pyrux/psuctrl.h"

#include <string>

namespace pyrux {

/// The supplies of the series AU_LINE and PT_LINE, and SILENT_1300, which differ in nothing here.
class PSUCTRL : public PowerSupplyOf<std::uint8_t> {
public:
    static constexpr const ModelRow& model = modelRow("psuCtrl");
    explicit PSUCTRL(const std::string& path, Clock& clock = Clock::current());

    _error getLog(PsuLog& log);
};

class PYRUX_PSUCTRL final : public SupplyHost<PSUCTRL, PYRUX_PSUCTRL_Base> {
public:
    using SupplyHost::SupplyHost;

    _error getLog(PsuLog& log) override { return FORWARD(getLog(log)); }
};

} // namespace pyrux
