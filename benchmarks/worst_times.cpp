// Prints docs/worst_times.md.

#include "worst_times.h"

#include <iostream>

int main()
{
    std::cout << pyrux::ctl::worstTimesTable();
}
