# What every target of the project shares, and the three kinds of targets it has.

add_library(nomira_options INTERFACE)
target_compile_options(nomira_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)
# With full optimisation, g++ 12 sees overflows in the moves and assignments of its own strings that
# can't be; the sanitizers look for the real ones.
target_compile_options(nomira_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-restrict>)
target_include_directories(nomira_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(NOMIRA_SANITIZE)
    target_compile_options(nomira_options INTERFACE
        -fsanitize=${NOMIRA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # What the sanitizers put into a function confuses this warning (g++ says so itself).
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(nomira_options INTERFACE -fsanitize=${NOMIRA_SANITIZE})
endif()

# The fuzzer is guided by what it sees of the libraries, not of its own target alone.
if(NOMIRA_FUZZ)
    target_compile_options(nomira_options INTERFACE -fsanitize=fuzzer-no-link
        -fsanitize-coverage-ignorelist=${PROJECT_SOURCE_DIR}/fuzz/unguided.txt)
endif()

# nomira_library(NAME LINKS lib... [PRIVATE_LINKS lib...] SOURCES file...)
# One library per folder of src/; LINKS is what the folder may use, and nothing else is linked.
function(nomira_library name)
    cmake_parse_arguments(ARG "" "" "LINKS;PRIVATE_LINKS;SOURCES" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC nomira_options ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    target_precompile_headers(${name} PRIVATE <string> <string_view> <vector> <memory> <optional>)
endfunction()

# nomira_program(NAME LINKS lib... SOURCES file...)
function(nomira_program name)
    cmake_parse_arguments(ARG "" "" "LINKS;SOURCES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE nomira_options ${ARG_LINKS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()

# nomira_test(NAME [WITH_TOOLKIT] [EACH_STORE] LINKS lib... SOURCES file...)
# One test program per folder of tests/; every test in it becomes a test of its own in ctest.
# EACH_STORE: three of them, one for each format of the message database; tests/testing/TestDatabase.h
# takes it from the environment.
# WITH_TOOLKIT: it makes a display of its own, and the leak sanitizer overlooks what the system's
# libraries of the windows keep to the end.
function(nomira_test name)
    cmake_parse_arguments(ARG "WITH_TOOLKIT;EACH_STORE" "" "LINKS;SOURCES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE nomira_options nomira_testing ${ARG_LINKS}
                          GTest::gtest GTest::gtest_main)
    target_precompile_headers(${name} REUSE_FROM nomira_testing)
    # No test uses the display of whoever runs it.
    set(environment "DISPLAY=")
    if(ARG_WITH_TOOLKIT)
        set(environment "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp")
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT 300 ENVIRONMENT "${environment}"
                   ENVIRONMENT_MODIFICATION "WAYLAND_DISPLAY=unset:")
    if(ARG_EACH_STORE)
        foreach(store jet3 jet4)
            gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
                TEST_SUFFIX .${store} TEST_LIST ${name}_${store}
                PROPERTIES TIMEOUT 300 ENVIRONMENT "${environment};NOMIRA_TEST_STORE=${store}"
                           ENVIRONMENT_MODIFICATION "WAYLAND_DISPLAY=unset:")
        endforeach()
    endif()
endfunction()
