/* The C library's dprintf beside the library's export of that name. Arguments: a library that calls it, and
   libraries to load before it, for all to see. Prints what both have written. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char** argv)
{
    for (int i = 2; i < argc; ++i)
        if (!dlopen(argv[i], RTLD_NOW | RTLD_GLOBAL)) {
            printf("%s\n", dlerror());
            return 2;
        }
    void* library = argc > 1 ? dlopen(argv[1], RTLD_NOW) : NULL;
    void (*other)(void) = library ? (void (*)(void))dlsym(library, "other") : NULL;
    if (!other) {
        printf("%s\n", dlerror());
        return 2;
    }
    dprintf(1, "host %d\n", 7);
    other();
    return 0;
}
