# The standard headers that most sources include, compiled once per build: once as position independent code for the
# libraries, once as code of a program, with GoogleTest, for the tests. The compiler takes a precompiled header only
# where all flags of code generation are the same. Sources include what they use all the same: the presets
# release, windows-x86_64 and fuzz build without.
option(PYRUX_PRECOMPILED_HEADERS "Compile the standard headers once per build" ON)

set(common_headers <algorithm> <array> <atomic> <chrono> <condition_variable> <cstddef> <cstdint> <cstring> <functional>
    <future> <map> <memory> <mutex> <optional> <set> <span> <string> <string_view> <system_error> <thread> <utility> <vector>)

# pyrux_add_headers(NAME HEADER...) : a set of precompiled headers
function(pyrux_add_headers name)
    if(PYRUX_PRECOMPILED_HEADERS)
        add_library(${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
        target_link_libraries(${name} PRIVATE Threads::Threads pyrux_warnings)
        target_precompile_headers(${name} PRIVATE ${ARGN})
    endif()
endfunction()

# pyrux_use_headers(NAME TARGET...) : the targets begin with the headers of the set
function(pyrux_use_headers name)
    if(PYRUX_PRECOMPILED_HEADERS)
        foreach(target ${ARGN})
            target_precompile_headers(${target} REUSE_FROM ${name})
            # What ccache asks for to see the headers in what it is given.
            target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>)
            # Optimised, g++ 12 sees overflows in the standard library, which it does not tell of in a system's header;
            # a precompiled one is none. The presets without hold the warnings.
            target_compile_options(${target} PRIVATE
                "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-stringop-overflow;-Wno-array-bounds>")
        endforeach()
    endif()
endfunction()

pyrux_add_headers(pyrux_library_headers ${common_headers})
