# What every file of the project is compiled with. Exact arithmetic rests on these flags.
set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# ccache, where it is installed, makes a second clean build a matter of seconds.
find_program(CCACHE ccache)
if(CCACHE)
    # By paths below the project, so that clones share what they compile.
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

# Kernels are written as vectors; what is left gains nothing from -O3, the compiler takes a third longer.
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_compile_options(-Wall -Wextra -mssse3 -ffp-contract=off)
# GCC 12 drops a rounding from double to float and back when it joins two of them into a vector (`t[0] = float(a[0])`,
# `t[1] = float(a[1])` with doubles t and a).
add_compile_options(-fno-tree-slp-vectorize)
add_link_options(-Wl,--as-needed)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # No excess precision, and a stack that is realigned for callers who keep it at 4 bytes. (-mstackrealign would do
    # that, too, but with it nothing is inlined from a header into the kernels for newer instruction sets.)
    add_compile_options(-mfpmath=sse -mincoming-stack-boundary=2)
    # Which instruction sets exist is part of the layout of every kernel table, so all files must agree on it.
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${PROJECT_SOURCE_DIR}/src/frame/highway_i386.h>")
endif()

if(QELCV_SANITIZE)
    # Regions and rows may lie at any address; the processor reads a sample wherever it is. The checks are the same at
    # -O1, the compiler takes half as long.
    add_compile_options(-O1 -fsanitize=${QELCV_SANITIZE} -fno-sanitize=alignment -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${QELCV_SANITIZE})
    # One source makes all kernels: the shortest and the longest vectors are enough here, for half the time.
    add_compile_definitions("HWY_DISABLED_TARGETS=(HWY_SSE4|HWY_AVX2)")
endif()

find_package(OpenMP REQUIRED COMPONENTS CXX)

# Highway: portable vectors with a choice of the instruction set at run time.
find_path(HWY_INCLUDE_DIR hwy/highway.h REQUIRED)
find_library(HWY_LIBRARY hwy REQUIRED)
add_library(hwy SHARED IMPORTED)
set_target_properties(hwy PROPERTIES IMPORTED_LOCATION ${HWY_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${HWY_INCLUDE_DIR}
                                     INTERFACE_COMPILE_DEFINITIONS HWY_SHARED_DEFINE)
