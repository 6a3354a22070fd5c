# Libraries, bundle layout and the helpers that every folder's CMakeLists.txt uses.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Network DBus Pdf)
find_package(ICU REQUIRED COMPONENTS i18n uc data)
find_package(JPEG REQUIRED)
find_package(TIFF REQUIRED)
find_package(PNG REQUIRED)
find_package(GIF REQUIRED)
find_package(EXPAT REQUIRED)
pkg_check_modules(QPDF REQUIRED IMPORTED_TARGET libqpdf)
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(EXIF REQUIRED IMPORTED_TARGET libexif)
pkg_check_modules(SANE REQUIRED IMPORTED_TARGET sane-backends)

# Warnings, sanitizers and include root, as one interface target.
add_library(paperline_options INTERFACE)
target_include_directories(paperline_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(paperline_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wformat=2
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
        -Woverloaded-virtual -Wcast-align>
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wduplicated-cond -Wlogical-op>)
if(PAPERLINE_WARNINGS_AS_ERRORS)
    target_compile_options(paperline_options INTERFACE -Werror)
endif()
if(PAPERLINE_SANITIZE)
    target_compile_options(paperline_options INTERFACE
        -fsanitize=${PAPERLINE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(paperline_options INTERFACE -fsanitize=${PAPERLINE_SANITIZE})
endif()
if(PAPERLINE_BUILD_FUZZERS)
    target_compile_options(paperline_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(PAPERLINE_COVERAGE)
    target_compile_options(paperline_options INTERFACE --coverage)
    target_link_options(paperline_options INTERFACE --coverage)
endif()

# The build tree has the layout of the installed one.
set(PAPERLINE_BUNDLE "${CMAKE_BINARY_DIR}/Paperline.app")
set(PAPERLINE_MACOS "${PAPERLINE_BUNDLE}/Contents/MACOS")
set(PAPERLINE_FRAMEWORKS "${PAPERLINE_BUNDLE}/Contents/Frameworks")
set(PAPERLINE_HELPERS "${PAPERLINE_BUNDLE}/Contents/Helpers")
set(PAPERLINE_RESOURCES "${PAPERLINE_BUNDLE}/Contents/Resources")
set(PAPERLINE_SOURCE_FOLDER "${CMAKE_BINARY_DIR}/TWAIN Data Sources")

# Slices of the controller from every folder are gathered here; the program and the tests link it.
add_library(paperline_controller STATIC)
set_target_properties(paperline_controller PROPERTIES AUTOMOC ON)
target_link_libraries(paperline_controller PUBLIC paperline_options Qt6::Widgets Qt6::DBus Qt6::Network)

# paperline_slices(FILE...): files of the calling folder that hold operations of AppDelegate.
function(paperline_slices)
    list(TRANSFORM ARGV PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/" OUTPUT_VARIABLE files)
    target_sources(paperline_controller PRIVATE ${files})
endfunction()

# paperline_leaves(NAME FILE...): a static library of files that know nothing of the controller.
function(paperline_leaves name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PUBLIC paperline_options)
endfunction()

# What a test says of itself needs no optimiser; without it the test build is a third shorter.
function(paperline_compile_quickly name)
    target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0 -g1>)
endfunction()

# The tests of a program, for CTest; TIMEOUT in seconds or empty.
function(paperline_register_tests name label timeout)
    paperline_compile_quickly(${name})
    if(NOT timeout)
        set(timeout 120)
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${label}" TIMEOUT ${timeout}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()

# paperline_test(NAME LABEL FILE... LIBS TARGET...): one GoogleTest program registered with CTest.
function(paperline_test name label)
    cmake_parse_arguments(arg "" "TIMEOUT" "LIBS" ${ARGN})
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gmock GTest::gtest_main)
    paperline_register_tests(${name} ${label} "${arg_TIMEOUT}")
endfunction()

# paperline_controller_test(NAME LABEL FILE... LIBS TARGET...): a test program that constructs the
# controller, on Qt's offscreen platform and with folders of its own (tests/support).
function(paperline_controller_test name label)
    cmake_parse_arguments(arg "" "TIMEOUT" "LIBS" ${ARGN})
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS} "${PROJECT_SOURCE_DIR}/tests/support/ControllerTestMain.cpp")
    target_link_libraries(${name} PRIVATE paperline_controller ${arg_LIBS} GTest::gmock)
    paperline_register_tests(${name} ${label} "${arg_TIMEOUT}")
endfunction()
