#pragma once

#include "devices/held_key.h"
#include "devices/keyboards/keyboard_layout.h"
#include "pyrux/records.h"
#include "transport/report.h"

#include <atomic>
#include <optional>

namespace pyrux {

/// The reports of keys that go down and up, as hosts are told of them.
class KeyReports {
public:
    KeyReports(const ModelRow& model, const KeyReportRow& row) : fnHeld(heldKeyOf(model)), row(row) {}

    static bool isOne(const Reply& report) { return report.begins({0x43, 0x01}); }

    /// @return no value: a state that is neither down nor up
    std::optional<NotifyRecord> read(const Reply& report) const;

private:
    std::atomic<bool>& fnHeld;
    const KeyReportRow& row;
};

} // namespace pyrux
