#include "devices/power/voltgrid.h"

namespace pyrux {

namespace {

const SupplyTraits voltgridTraits{.model = VOLTGRID::model,
                                  .powerFactorCounts = false, // deliberate: unlike its successors
                                  .fanLock = false,
                                  .fanLog = false};

} // namespace

VOLTGRID::VOLTGRID(const std::string& path, Clock& clock) : PowerSupplyOf(path, voltgridTraits, clock) {}

} // namespace pyrux

PYRUX_FACTORY(voltgrid, pyrux::PYRUX_VOLTGRID)
