#include <dlfcn.h>

#include <chrono>
#include <cstdio>

/// Usage: pyrux_load_time LIBRARY…: loads the libraries in order and prints the time of each in microseconds.
int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (!dlopen(arguments[i], RTLD_NOW | RTLD_GLOBAL)) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
        const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
        std::printf("%.1f\n", time.count());
    }
    return 0;
}
