#include "tests/worst/measure.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace pyrux::test {
TEST(WorstTimes, dump)
{
    for (const SlotTable& table : slotTables()) {
        std::printf("== %s open", table.model.c_str());
        for (const Trouble t : {Trouble::late, Trouble::silent, Trouble::stalled, Trouble::vanished})
            std::printf(" %d", measuredOpening(t, factsOf(table.model)));
        std::printf("\n");
        for (std::size_t n = 0; n < table.slots.size(); ++n) {
            std::printf("%s", table.slots[n].name.c_str());
            for (const Trouble t :
                 {Trouble::late, Trouble::silent, Trouble::stalled, Trouble::vanished, Trouble::noticed})
                std::printf(" %d", measuredCall(t, table, table.slots[n], n));
            std::printf("\n");
            std::fflush(stdout);
        }
    }
}
} // namespace pyrux::test
