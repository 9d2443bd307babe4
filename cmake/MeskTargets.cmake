# Helpers that say once how a target of this project is built.

add_library(mesk-warnings INTERFACE)
target_compile_options(mesk-warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
add_library(mesk-options INTERFACE)
target_link_libraries(mesk-options INTERFACE mesk-warnings)
target_compile_definitions(
    mesk-options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
                           QT_NO_KEYWORDS)

# Called once all options are known, from the top.
function(mesk_configure_options)
    if(MESK_WARNINGS_AS_ERRORS)
        target_compile_options(mesk-options INTERFACE -Werror)
    endif()
    if(MESK_SANITIZE)
        add_compile_options(-fsanitize=${MESK_SANITIZE} -fno-omit-frame-pointer)
        if(MESK_SANITIZE MATCHES "undefined")
            add_compile_options(-fno-sanitize-recover=undefined)
        endif()
        add_link_options(-fsanitize=${MESK_SANITIZE})
    endif()
    if(MESK_FUZZ)
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
    if(MESK_COVERAGE)
        add_compile_options(--coverage)
        add_link_options(--coverage)
    endif()
endfunction()

# An object library of the product. Its includes start at the repository root.
function(mesk_object_library name)
    add_library(${name} OBJECT ${ARGN})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE mesk-options)
endfunction()

# A library that is loaded by name from the installation root.
function(mesk_root_module name)
    add_library(${name} MODULE ${ARGN})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE mesk-options)
    set_target_properties(
        ${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${MESK_ROOT_BIN}"
                           INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${name} LIBRARY DESTINATION "${MESK_INSTALL_BIN}" COMPONENT runtime)
endfunction()

# A shared library that modules of the installation root link.
function(mesk_root_shared name)
    add_library(${name} SHARED ${ARGN})
    target_link_libraries(${name} PRIVATE mesk-options)
    set_target_properties(
        ${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${MESK_ROOT_BIN}"
                           INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${name} LIBRARY DESTINATION "${MESK_INSTALL_BIN}" COMPONENT runtime)
endfunction()

# All object code of the product but the clock and the event log of the operating system:
# PROGRAM decides which of the two forms it links, os-system or os-test.
set(MESK_PRODUCT_OBJECTS interface plugin-core support os-base)

# A unit test program: the product's objects with the clock and the event log of the tests.
# It stands in unit/bin, so that the install root it finds is the tests' own.
function(mesk_unit_test name)
    add_executable(${name} ${ARGN})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(
        ${name} PRIVATE mesk-options ${MESK_PRODUCT_OBJECTS} os-test mesk-packets kivo-core
                        kivo-lib-mesk GTest::gmock GTest::gtest_main)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${MESK_UNIT_BIN}")
    mesk_register_test(${name})
endfunction()

# A test program of its own that links nothing of the product by itself.
function(mesk_plain_test name)
    add_executable(${name} ${ARGN})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE mesk-options GTest::gmock GTest::gtest_main)
    mesk_register_test(${name})
endfunction()

function(mesk_register_test name)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 240)
endfunction()
