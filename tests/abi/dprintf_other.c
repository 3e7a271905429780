/* A library that has nothing to do with PYRUX and calls the C library's dprintf. */
#define _GNU_SOURCE
#include <stdio.h>

__attribute__((visibility("default"))) void other(void)
{
    dprintf(1, "other %d\n", 8);
}
