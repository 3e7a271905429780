# Compiler settings of everything in the tree.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# With precompiled headers ccache works under these conditions only.
find_program(CCACHE ccache)
find_program(ENV_PROGRAM env)
if(CCACHE AND ENV_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ENV_PROGRAM} CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()

# Warnings apply to the project's own targets: link pyrux_warnings. g++ 12 sees what is not there: overlaps and
# overflows in every text put in front of a string (-Wrestrict, -Wstringop-overflow), on 32 bits overreads in every
# comparison of vectors (-Wstringop-overread) and places outside of what is copied (-Warray-bounds).
add_library(pyrux_warnings INTERFACE)
target_compile_options(pyrux_warnings INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Werror
    "$<$<CXX_COMPILER_ID:GNU>:-Wshadow=local;-Wno-restrict;-Wno-stringop-overread;-Wno-stringop-overflow>"
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<PLATFORM_ID:Windows>>:-Wno-array-bounds>")

# Not optimised: the tests mostly wait, and optimising instrumented code takes four times as long to compile.
if(PYRUX_SANITIZE)
    add_compile_options(-fsanitize=${PYRUX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${PYRUX_SANITIZE})
endif()

if(PYRUX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -O1)
    add_link_options(-fsanitize=address,undefined)
endif()

if(WIN32)
    add_compile_definitions(_WIN32_WINNT=0x0601 UNICODE _UNICODE)
    # One runtime inside each binary: nothing but system DLLs is needed beside it.
    add_link_options(-static -static-libgcc -static-libstdc++)
    # All binaries in one folder, so that each finds its DLLs.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
else()
    add_link_options(-Wl,--as-needed)
endif()
