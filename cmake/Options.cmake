# Settings that hold for every target, and the one way in which libraries and tests are declared.

option(QUORVEX_BUILD_TESTS "Build the tests" ON)
option(QUORVEX_BUILD_BENCHMARKS "Build the benchmark programs" OFF)
set(QUORVEX_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them (address,undefined or thread)")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Programs and components lie in the build folder as they lie when installed: bin/ beside components/.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(QUORVEX_COMPONENT_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/components")
set(QUORVEX_COMPONENT_INSTALL_DIR "lib/vantaro/components")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_compile_options(
    -Wall -Wextra -Wpedantic -Werror -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual -Wcast-align -Wformat=2 -Wundef)
if(QUORVEX_SANITIZE)
    add_compile_options(-fsanitize=${QUORVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${QUORVEX_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # These warn of code that only the sanitizer's own instrumentation makes.
        add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow -Wno-tsan)
    endif()
endif()

# quorvex_library(NAME SOURCES... [PUBLIC libraries...] [PRIVATE libraries...])
# One static library per folder; everyone includes by the path from the root of the repository.
function(quorvex_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PUBLIC;PRIVATE")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
endfunction()

# quorvex_test(NAME SOURCES... LIBRARIES...)
# A GoogleTest program; every test case in it becomes a test of ctest, with the program's name as its label.
function(quorvex_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
    if(QUORVEX_SANITIZE)
        target_compile_options(${name} PRIVATE -O0) # compiling them takes longer than running them
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 LABELS ${name})
endfunction()
