# Settings that every target of ours shares, and the helpers that define targets.

add_library(bw_options INTERFACE)
target_compile_options(bw_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
target_compile_definitions(bw_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(BW_WERROR)
    target_compile_options(bw_options INTERFACE -Werror)
endif()
if(BW_SANITIZE)
    target_compile_options(bw_options INTERFACE -fsanitize=${BW_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(bw_options INTERFACE -fsanitize=${BW_SANITIZE})
endif()

# bw_library(NAME DIRS dir... LINK target...): a static library of all sources below the given folders of this directory.
function(bw_library name)
    cmake_parse_arguments(arg "" "" "DIRS;LINK;PRIVATE_LINK" ${ARGN})
    set(sources)
    foreach(dir ${arg_DIRS})
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.h)
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE bw_options ${arg_LINK})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC bw_options ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK})
endfunction()

# bw_test(NAME SOURCES file... LINK target...): one Qt Test program, run by ctest without a display.
function(bw_test name)
    cmake_parse_arguments(arg "GUI" "" "SOURCES;LINK;LABELS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE bw_options Qt6::Test bw_test_support ${arg_LINK})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120 LABELS "${arg_LABELS}"
                         ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Europe/Berlin;TSAN_OPTIONS=die_after_fork=0:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
endfunction()
