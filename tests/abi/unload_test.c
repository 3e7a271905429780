/* A host that lets the library go. Argument: the library. Once one of its threads may be running, by
   whichever export, it must stay: the thread's code would be gone. */

#include <stdint.h>
#include <stdio.h>

#ifdef _WIN32
#include <windows.h>
#define OPEN_LIBRARY(file) (void*)LoadLibraryA(file)
#define CLOSE_LIBRARY(library) FreeLibrary((HMODULE)(library))
#define FIND(library, name) ((void*)(intptr_t)GetProcAddress((HMODULE)(library), name))
#define IS_LOADED(file) (GetModuleHandleA(file) != NULL)
#else
#include <dlfcn.h>
#define OPEN_LIBRARY(file) dlopen(file, RTLD_NOW | RTLD_LOCAL)
#define CLOSE_LIBRARY(library) dlclose(library)
#define FIND(library, name) dlsym(library, name)
#define IS_LOADED(file) (dlopen(file, RTLD_NOW | RTLD_NOLOAD) != NULL)
#endif

int main(int count, char** arguments)
{
    const char* const file = count > 1 ? arguments[1] : "";
    void* library = OPEN_LIBRARY(file);
    if (!library) {
        printf("cannot load %s\n", file);
        return 1;
    }
    /* sysInfo starts a thread; pyrux_init has not been called. */
    void* (*const sysInfo)(void) = (void* (*)(void))(intptr_t)FIND(library, "sysInfo");
    if (!sysInfo || !sysInfo()) {
        printf("no sysInfo\n");
        return 1;
    }
    CLOSE_LIBRARY(library);
    if (!IS_LOADED(file)) {
        printf("gone, with its thread running\n");
        fflush(stdout);
#ifdef _WIN32
        TerminateProcess(GetCurrentProcess(), 1);
#endif
        return 1;
    }
    printf("stays\n");
    return 0;
}
