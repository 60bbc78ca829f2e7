# How a folder of the project becomes a target.

add_library(tamarack_options INTERFACE)
target_compile_options(tamarack_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(TAMARACK_STRICT)
    target_compile_options(tamarack_options INTERFACE -Werror)
endif()

# Includes are written from src/, as in "session/NewsSession.h", or from the top, as in "demo/sample/SampleServer.h", yet a
# library must not reach a folder above its own. Each folder therefore gets an include root of its own that holds nothing
# but a link to that folder; a target sees the roots of the libraries that it links and no others.
function(tamarack_include_root target)
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
    string(REGEX REPLACE "^src/" "" folder ${folder})
    string(REPLACE "/" "-" name ${folder})
    set(root ${CMAKE_BINARY_DIR}/include-roots/${name})
    cmake_path(GET folder PARENT_PATH parent)
    file(MAKE_DIRECTORY ${root}/${parent})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
    target_include_directories(${target} PUBLIC ${root})
endfunction()

# tamarack_library(session SOURCES A.cpp B.cpp LINK tamarack_forms): the static library tamarack_session.
function(tamarack_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    set(target tamarack_${folder})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE tamarack_options)
    tamarack_include_root(${target})
endfunction()

# tamarack_test(session SOURCES A_test.cpp LINK tamarack_session): the GoogleTest program test_session, run by CTest
# on Qt's offscreen platform.
function(tamarack_test folder)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK" ${ARGN})
    set(target test_${folder})
    add_executable(${target} ${ARG_SOURCES})
    target_link_libraries(${target} PRIVATE ${ARG_LINK} tamarack_test_support GTest::gtest GTest::gmock tamarack_options)
    tamarack_include_root(${target})
    add_test(NAME ${folder} COMMAND ${target})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(${folder} PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()
