# SPDX-License-Identifier: GPL-3.0-or-later
# Settings that every target of ours shares, and the helpers that define targets.

add_library(bw_options INTERFACE)
target_compile_options(bw_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                       -pthread) # in every target, as the precompiled headers depend on it
target_compile_definitions(bw_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
    target_compile_options(bw_options INTERFACE -fPIC) # likewise; older ones ask for it themselves
endif()
if(BW_WERROR)
    target_compile_options(bw_options INTERFACE -Werror)
endif()
if(BW_SANITIZE)
    target_compile_options(bw_options INTERFACE -fsanitize=${BW_SANITIZE} -fno-omit-frame-pointer)
    # The sanitizer loads the program's own libraries in its stead, and the newer tag says only where the program looks.
    target_link_options(bw_options INTERFACE -fsanitize=${BW_SANITIZE} LINKER:--disable-new-dtags)
endif()

# What most sources include, parsed once: with widgets (the views and what stands above them) and without.
# CMAKE_DISABLE_PRECOMPILE_HEADERS builds without it, and so finds includes that are missing.
set(common_headers <algorithm> <array> <atomic> <chrono> <cmath> <condition_variable> <deque> <functional> <map>
    <memory> <mutex> <optional> <string> <thread> <utility> <vector>
    <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QImage> <QJsonArray> <QJsonDocument>
    <QJsonObject> <QList> <QLoggingCategory> <QMap> <QObject> <QPointer> <QRegularExpression> <QSettings> <QString>
    <QStringList> <QTimer> <QUrl>)
set(widget_headers <QAction> <QApplication> <QBoxLayout> <QComboBox> <QEvent> <QLabel> <QMenu> <QPainter>
    <QPushButton> <QStyle> <QWidget>)
# Owned by libraries that define no more macros of Qt than their users: GCC refuses a header with others.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/generated/nothing.cpp CONTENT "")
add_library(bw_common_headers OBJECT ${PROJECT_BINARY_DIR}/generated/nothing.cpp)
target_link_libraries(bw_common_headers PRIVATE bw_options Qt6::Core)
target_include_directories(bw_common_headers SYSTEM PRIVATE ${Qt6Gui_INCLUDE_DIRS})
target_precompile_headers(bw_common_headers PRIVATE ${common_headers})
add_library(bw_widget_headers OBJECT ${PROJECT_BINARY_DIR}/generated/nothing.cpp)
target_link_libraries(bw_widget_headers PRIVATE bw_options Qt6::Widgets)
target_precompile_headers(bw_widget_headers PRIVATE ${common_headers} ${widget_headers})

# bw_precompiled(TARGET): the target uses the precompiled header that suits what it links.
function(bw_precompiled name)
    get_target_property(links ${name} LINK_LIBRARIES)
    if(links MATCHES "bw_views|bw_app|Qt6::Widgets")
        target_precompile_headers(${name} REUSE_FROM bw_widget_headers)
    else()
        target_precompile_headers(${name} REUSE_FROM bw_common_headers)
    endif()
endfunction()

# bw_library(NAME [MOC] DIRS dir... LINK target...): a static library of all sources below the given folders of this
# directory; MOC if one of its headers has a Q_OBJECT.
function(bw_library name)
    cmake_parse_arguments(arg "MOC" "" "DIRS;LINK;PRIVATE_LINK" ${ARGN})
    set(sources)
    foreach(dir ${arg_DIRS})
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.h)
        list(APPEND sources ${found})
    endforeach()
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES AUTOMOC "${arg_MOC}")
    target_link_libraries(${name} PUBLIC bw_options ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK})
    bw_precompiled(${name})
endfunction()

# bw_program(NAME SOURCES file... LINK target...): a program for tests.
function(bw_program name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE bw_options ${arg_LINK})
    add_dependencies(${name} bw_movies)
    bw_precompiled(${name})
    # AUTOMOC would start CMake for each of them.
    foreach(source ${arg_SOURCES})
        file(STRINGS ${source} includes_moc REGEX "^#include \".*\\.moc\"$")
        if(includes_moc)
            get_filename_component(stem ${source} NAME_WE)
            add_custom_command(OUTPUT ${stem}.moc DEPENDS ${source} VERBATIM
                               COMMAND Qt6::moc -o ${stem}.moc ${CMAKE_CURRENT_SOURCE_DIR}/${source})
            target_sources(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${stem}.moc)
            target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
        endif()
    endforeach()
endfunction()

# The longest that most tests, and the few long ones, may take; under a sanitizer everything is slow.
set(bw_test_seconds 120)
set(bw_long_test_seconds 400)
if(BW_SANITIZE)
    set(bw_test_seconds 480)
    set(bw_long_test_seconds 1600)
endif()

# bw_test(NAME SOURCES file... LINK target...): one Qt Test program, run by ctest without a display.
function(bw_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK;LABELS" ${ARGN})
    bw_program(${name} SOURCES ${arg_SOURCES} LINK Qt6::Test bw_test_support ${arg_LINK})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${bw_test_seconds} LABELS "${arg_LABELS}"
                         ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=Europe/Berlin")
endfunction()
