# The four kinds of target a folder may define. No folder sets flags or looks for packages itself.

# tesserine_library(<room> SOURCES … [DEPENDS …] [PRIVATE_DEPENDS …] [TESTS …] [TEST_DEPENDS …])
#
# The library `tesserine_<room>`, known to others as `tesserine::<room>`. DEPENDS is what its headers
# need, PRIVATE_DEPENDS what only its sources need; both take any target. TESTS become the program
# `tesserine_<room>_tests`. A room of headers only leaves SOURCES out.
function(tesserine_library room)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" ""
        "SOURCES;HEADERS;DEPENDS;PRIVATE_DEPENDS;TESTS;TEST_DEPENDS")
    tesserine_refuse_unknown(tesserine_library "${arg_UNPARSED_ARGUMENTS}")

    set(target tesserine_${room})
    if(arg_SOURCES)
        add_library(${target} STATIC ${arg_SOURCES} ${arg_HEADERS})
        target_link_libraries(${target}
            PUBLIC tesserine::settings ${arg_DEPENDS}
            PRIVATE ${arg_PRIVATE_DEPENDS})
    else()
        add_library(${target} INTERFACE)
        target_link_libraries(${target} INTERFACE tesserine::settings ${arg_DEPENDS})
    endif()
    add_library(tesserine::${room} ALIAS ${target})

    if(arg_TESTS)
        tesserine_tests(${room} SOURCES ${arg_TESTS} DEPENDS tesserine::${room} ${arg_TEST_DEPENDS})
    endif()
endfunction()

# tesserine_program(<name> SOURCES … DEPENDS …)
#
# The program `<name>`, built as bin/<name> in the build folder.
function(tesserine_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
    tesserine_refuse_unknown(tesserine_program "${arg_UNPARSED_ARGUMENTS}")

    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE tesserine::settings ${arg_DEPENDS})
    add_dependencies(${name} tesserine-network)
endfunction()

# tesserine_module(<name> SOURCES … DEPENDS …)
#
# The module lib/tesserine/<name>.so, which programs load when they need what it links. Others see
# of it only what its sources mark as visible.
function(tesserine_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
    tesserine_refuse_unknown(tesserine_module "${arg_UNPARSED_ARGUMENTS}")

    add_library(${name} MODULE ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE tesserine::settings ${arg_DEPENDS})
    target_link_options(${name} PRIVATE "LINKER:--exclude-libs,ALL,--as-needed")
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib/tesserine")
    install(TARGETS ${name} LIBRARY DESTINATION lib/tesserine)
endfunction()

# tesserine_tests(<name> SOURCES … [DEPENDS …])
#
# The GoogleTest program `tesserine_<name>_tests`; each of its tests is one test of CTest, in a
# process of its own. For tests that belong to no library; a room uses TESTS.
function(tesserine_tests name)
    if(NOT BUILD_TESTING)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
    tesserine_refuse_unknown(tesserine_tests "${arg_UNPARSED_ARGUMENTS}")

    set(target tesserine_${name}_tests)
    add_executable(${target} ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE tesserine::settings ${arg_DEPENDS}
        tesserine::test_support GTest::gmock GTest::gtest_main)
    add_dependencies(${target} tesserine-network)
    gtest_discover_tests(${target}
        TEST_PREFIX "${name}/"
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300)
endfunction()

function(tesserine_refuse_unknown caller unknown)
    if(unknown)
        message(FATAL_ERROR "${caller} does not know what to do with: ${unknown}")
    endif()
endfunction()
