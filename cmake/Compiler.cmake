# How every file is compiled and linked. Gathered in the target `tesserine::settings`, which each room
# links, so that no room has compiler flags of its own.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

# Building without optimisation takes half the time, which the tests do not lose again; only the
# thread sanitizer is too slow for that. Line tables are kept, so that a report can be read; whoever
# needs variables in a debugger configures with -DCMAKE_CXX_FLAGS=-g.
if(TESSERINE_SANITIZE MATCHES "thread")
    set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
else()
    set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g1")
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g1")

# Up to eight sources of a target are compiled as one: that takes less than half the time, most of which
# goes into reading the same headers. So unnamed namespaces of a room share their names. The preset
# "apart" compiles each source by itself.
set(CMAKE_UNITY_BUILD ON CACHE BOOL "Compile several sources of a target as one")
set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)

# One cache for all working trees beside this one: paths are kept relative to their parent.
find_program(TESSERINE_CCACHE ccache)
if(TESSERINE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    cmake_path(GET PROJECT_SOURCE_DIR PARENT_PATH parentFolder)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${parentFolder}" CCACHE_NOHASHDIR=1
        "${TESSERINE_CCACHE}"
    )
endif()

add_library(tesserine_settings INTERFACE)
add_library(tesserine::settings ALIAS tesserine_settings)

# Includes are written as paths from the root.
target_include_directories(tesserine_settings INTERFACE "${PROJECT_SOURCE_DIR}")

# -Wno-missing-field-initializers: designated initialisers that leave the defaults alone are meant.
# -Wno-restrict: g++ 12 sees overlapping copies where an optimised build only joins strings.
# -Wshadow=local, -Wno-subobject-linkage: in joined sources the names of one file would shadow those of
# another, and every one of them looks as if it came from a header. clang-tidy sees each file alone.
target_compile_options(tesserine_settings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wconversion -Wshadow=local -Wold-style-cast -Wcast-qual -Wnon-virtual-dtor -Woverloaded-virtual
    -Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wextra-semi -Wformat=2
    -Wimplicit-fallthrough
    -Wno-missing-field-initializers -Wno-restrict -Wno-subobject-linkage
    -fno-omit-frame-pointer
)

target_compile_definitions(tesserine_settings INTERFACE
    _GLIBCXX_ASSERTIONS
    TESSERINE_VERSION="${PROJECT_VERSION}"
    TESSERINE_DOMAIN="${TESSERINE_DOMAIN}"
    $<$<BOOL:${TESSERINE_FAIL_POINTS}>:TESSERINE_FAIL_POINTS=1>
)

if(TESSERINE_SANITIZE)
    target_compile_options(tesserine_settings INTERFACE
        -fsanitize=${TESSERINE_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(tesserine_settings INTERFACE -fsanitize=${TESSERINE_SANITIZE})
    if(TESSERINE_SANITIZE MATCHES "undefined")
        # Checks at every access through a pointer take a third of the time to compile and find what
        # the address sanitizer finds as well.
        target_compile_options(tesserine_settings INTERFACE
            -fno-sanitize=null,alignment,object-size,vptr,pointer-overflow)
    endif()
endif()

if(TESSERINE_SANITIZE MATCHES "thread")
    # The thread sanitizer of g++ 12 does not know the call that locks against a monotonic clock, and
    # takes each such lock for one never held. Without this macro the library uses an older call.
    set(tsanHeader "${PROJECT_BINARY_DIR}/ThreadSanitizer.h")
    file(CONFIGURE OUTPUT "${tsanHeader}" CONTENT
        "#include <bits/c++config.h>\n#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK\n")
    target_compile_options(tesserine_settings INTERFACE -include "${tsanHeader}")
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(tesserine_settings INTERFACE
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection)
    target_link_options(tesserine_settings INTERFACE
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> -Wl,-z,relro,-z,now)
endif()

find_program(TESSERINE_MOLD mold)
if(TESSERINE_MOLD)
    target_link_options(tesserine_settings INTERFACE -fuse-ld=mold)
endif()
