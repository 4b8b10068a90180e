# How every target of the tree is compiled, and the three ways to make one.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)

add_library(qel_options INTERFACE)
target_compile_options(qel_options INTERFACE -Wall -Wextra -Werror -Wshadow -Wnon-virtual-dtor
    # GCC 12 sees overlaps in "text" + std::string that are not there (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_compile_definitions(qel_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_FOREACH QT_NO_JAVA_STYLE_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# Qt gives each test the paths of its folders, which nobody asks for and which would make a
# precompiled header good for one folder only. Optimising a test takes longer than running it.
set(QEL_TEST_OPTIONS -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR $<$<CONFIG:Debug>:-O0>)
# Undefined behaviour is looked for in the product: in the many comparisons of the tests that takes
# a fifth of the compiler's time.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
    list(APPEND QEL_TEST_OPTIONS -fno-sanitize=undefined)
endif()

# A quicker linker for the hundred programs that nobody installs.
find_program(QEL_ld_lld ld.lld)

# qel_library(NAME SOURCES ... LIBS ...): one layer as a static library. Headers are included
# from the layer's parent folder ("dataset/RowSet.h", "sql/Parser.h").
function(qel_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;PRIVATE_LIBS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}/..")
    target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE qel_options ${ARG_PRIVATE_LIBS})
    qel_precompile(${name})
endfunction()

# Where the address of the PostgreSQL cluster stands while tests run that need one.
set(QEL_TEST_POSTGRES "${CMAKE_BINARY_DIR}/postgres.url")

# qel_test(NAME SOURCES ... LIBS ... [TIMEOUT seconds] [ENV name=value ...] [POSTGRES]): one Qt Test
# program, run by CTest without a display. POSTGRES: run a second time, as NAME.pg, with its
# databases on PostgreSQL (tests/server/support); POSTGRES_ONLY: run as NAME.pg alone. Each
# XxxTest.cpp includes its own XxxTest.moc.
# There are many small tests, and for each of them AUTOMOC would start a CMake of its own and compile
# an empty file.
function(qel_test name)
    cmake_parse_arguments(ARG "POSTGRES;POSTGRES_ONLY" "TIMEOUT" "SOURCES;LIBS;ENV" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
    target_include_directories(${name} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/moc")
    # Qt Test includes other headers where Qt Network is linked: all tests link it, so that they can
    # share precompiled headers.
    target_link_libraries(${name} PRIVATE qel_options ${ARG_LIBS} Qt6::Test Qt6::Network)
    foreach(source IN LISTS ARG_SOURCES)
        if(source MATCHES "(Test|tst_[a-z_]+)\\.cpp$")
            get_filename_component(stem "${source}" NAME_WE)
            set(moc "${CMAKE_CURRENT_BINARY_DIR}/moc/${stem}.moc")
            qt_generate_moc("${CMAKE_CURRENT_SOURCE_DIR}/${source}" "${moc}" TARGET ${name})
            target_sources(${name} PRIVATE "${moc}")
        endif()
    endforeach()
    target_compile_options(${name} PRIVATE ${QEL_TEST_OPTIONS})
    if(QEL_ld_lld)
        target_link_options(${name} PRIVATE -fuse-ld=lld)
    endif()
    qel_precompile_test(${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set(environment "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Asia/Shanghai;${ARG_ENV}")
    if(NOT ARG_POSTGRES_ONLY)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES
            TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${environment}")
    endif()
    if(ARG_POSTGRES OR ARG_POSTGRES_ONLY)
        add_test(NAME ${name}.pg COMMAND ${name})
        set_tests_properties(${name}.pg PROPERTIES
            TIMEOUT ${ARG_TIMEOUT}
            FIXTURES_REQUIRED Postgres
            ENVIRONMENT "${environment};QEL_TEST_POSTGRES=${QEL_TEST_POSTGRES}")
    endif()
endfunction()

# qel_bench(NAME SOURCES ... LIBS ...): one Google Benchmark program.
function(qel_bench name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    find_package(benchmark REQUIRED)
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE qel_options ${ARG_LIBS} benchmark::benchmark)
endfunction()
