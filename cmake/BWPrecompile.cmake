# Qt's headers are most of what the compiler reads. With BW_PRECOMPILE it reads them once for each library of ours, which
# takes a third off the time of a whole build. The presets for sanitizers do without: only such a build finds a file that
# forgot an include.
option(BW_PRECOMPILE "Compile Qt's headers beforehand" OFF)

# bw_precompile(NAME HEADER...): for the files of that library.
function(bw_precompile name)
    if(BW_PRECOMPILE)
        target_precompile_headers(${name} PRIVATE ${ARGN})
    endif()
endfunction()

# ccache needs to be told that the time of such a header's making does not matter.
if(BW_PRECOMPILE AND CCACHE AND CMAKE_CXX_COMPILER_LAUNCHER STREQUAL CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()
