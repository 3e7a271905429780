# Libraries from the system's packages.
find_package(Threads REQUIRED)

# Header-only libraries and hidapi.h are system independent: a cross build takes them from the machine's own
# packages, through a folder that holds nothing else of the machine's headers.
set(PORTABLE_HEADERS ${CMAKE_BINARY_DIR}/portable-headers)
file(MAKE_DIRECTORY ${PORTABLE_HEADERS})
foreach(folder hidapi nlohmann CLI)
    if(NOT EXISTS ${PORTABLE_HEADERS}/${folder})
        find_path(PYRUX_${folder}_PARENT ${folder} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
        file(CREATE_LINK ${PYRUX_${folder}_PARENT}/${folder} ${PORTABLE_HEADERS}/${folder} SYMBOLIC)
    endif()
endforeach()
add_library(portable_headers INTERFACE)
target_include_directories(portable_headers SYSTEM INTERFACE ${PORTABLE_HEADERS})

# hidapi as the library links it: the system's on Linux, hidapi.dll through an import library on Windows.
add_library(hidapi INTERFACE)
target_link_libraries(hidapi INTERFACE portable_headers)
if(WIN32)
    set(HIDAPI_IMPORT ${CMAKE_BINARY_DIR}/libhidapi.dll.a)
    add_custom_command(OUTPUT ${HIDAPI_IMPORT}
        COMMAND ${CMAKE_DLLTOOL} -d ${PROJECT_SOURCE_DIR}/cmake/hidapi.def -l ${HIDAPI_IMPORT}
        DEPENDS ${PROJECT_SOURCE_DIR}/cmake/hidapi.def)
    add_custom_target(hidapi_import DEPENDS ${HIDAPI_IMPORT})
    add_dependencies(hidapi hidapi_import)
    target_link_libraries(hidapi INTERFACE ${HIDAPI_IMPORT})
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(HIDAPI_HIDRAW REQUIRED IMPORTED_TARGET hidapi-hidraw)
    pkg_check_modules(INIH REQUIRED IMPORTED_TARGET inih)
    pkg_check_modules(UDEV REQUIRED IMPORTED_TARGET libudev)
    target_link_libraries(hidapi INTERFACE PkgConfig::HIDAPI_HIDRAW)
endif()

if(PYRUX_TESTS)
    if(WIN32)
        set(gtest_force_shared_crt ON)
        set(INSTALL_GTEST OFF)
        add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    else()
        find_package(GTest REQUIRED)
    endif()
    include(GoogleTest)
endif()
