# How every target of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(PDFSETTINGS_SANITIZE "" CACHE STRING "Sanitizers to build with: address, undefined, thread")
option(PDFSETTINGS_FUZZ "Build the fuzz targets, with clang" OFF)
option(PDFSETTINGS_BENCHMARKS "Build the benchmarks, which need the libraries they compare with" OFF)
option(PDFSETTINGS_FAILURE_HOOKS "Let tests make allocations and stream operations fail" OFF)
option(PDFSETTINGS_COVERAGE "Count which lines and branches run" OFF)
option(PDFSETTINGS_TESTS "Build the examples and the tests" ${PROJECT_IS_TOP_LEVEL})
option(PDFSETTINGS_LIBCXX "Build with libc++, and GoogleTest from its sources" OFF)

# Sizes of files and dates have 64 bits, on machines with 32 too.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

# The presets of the checks make errors of them; other projects and other compilers see warnings.
add_compile_options(
    -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees an overlap in every sum of a literal and a std::string (GCC bug 105651).
    add_compile_options(-Wno-restrict)
endif()

# Makes a mistake in memory a crash instead of a way in: the stack is checked, calls of the C library with a buffer of
# known size too, indirect jumps end only where they may, no segment is code and something else, and what the loader
# has bound cannot be written any more. The sanitizers check more than the first two.
include(CheckPIESupported)
check_pie_supported()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64")
    add_compile_options(-fcf-protection)
endif()
if(NOT PDFSETTINGS_SANITIZE)
    add_compile_options(-fstack-protector-strong)
    add_compile_options($<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
endif()
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,separate-code -Wl,-z,noexecstack)

# Lets a release of the two libraries be optimized as wholes: they spend their time in many small
# functions of many files. The objects hold ordinary code too, which programs link: the unit tests put
# functions of their own in the place of some.
set(PDFSETTINGS_IS_WHOLE "$<AND:$<CONFIG:Release>,$<CXX_COMPILER_ID:GNU>>")
add_link_options("$<${PDFSETTINGS_IS_WHOLE}:-fno-lto>")

function(pdfsettings_optimize_as_whole target)
    target_compile_options(${target} PRIVATE
        "$<${PDFSETTINGS_IS_WHOLE}:-flto=auto;-ffat-lto-objects>")
    target_link_options(${target} PRIVATE "$<${PDFSETTINGS_IS_WHOLE}:-flto=auto>")
endfunction()

if(PDFSETTINGS_LIBCXX)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-stdlib=libc++>)
    add_link_options(-stdlib=libc++)
endif()

if(PDFSETTINGS_SANITIZE)
    list(JOIN PDFSETTINGS_SANITIZE "," sanitizers)
    add_compile_options(
        -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${sanitizers})
endif()

if(PDFSETTINGS_COVERAGE)
    # Threads count together.
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
