// The strand controllers, which are function for function the same.

#include "devices/lighting/strand_controller.h"
#include "devices/variant.h"

namespace pyrux {

namespace {

constexpr StrandTraits strandhubRow{modelRow("strandhub")};
constexpr StrandTraits strandhubv2Row{modelRow("strandhubv2")};

template <const StrandTraits& row, class Interface>
using StrandHub = VariantHost<StrandHost, Variant<StrandController, row>, Interface>;

} // namespace

} // namespace pyrux

PYRUX_FACTORY(strandhub, pyrux::StrandHub<pyrux::strandhubRow, PYRUX_STRANDHUB_Base>)
PYRUX_FACTORY(strandhubv2, pyrux::StrandHub<pyrux::strandhubv2Row, PYRUX_STRANDHUBV2_Base>)
