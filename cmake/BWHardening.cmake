# What Debian asks of programs that read what others made (pictures, movies, devices): overruns of buffers end the
# program, and its tables cannot be rewritten once it runs. For optimised builds only; the sanitizers see more.
set(bw_optimised $<CONFIG:RelWithDebInfo,Release>)
target_compile_options(bw_options INTERFACE $<${bw_optimised}:-fstack-protector-strong>)
target_compile_definitions(bw_options INTERFACE $<${bw_optimised}:_FORTIFY_SOURCE=2>)
target_link_options(bw_options INTERFACE $<${bw_optimised}:LINKER:-z,relro,-z,now>)
