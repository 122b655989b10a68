# SPDX-License-Identifier: GPL-3.0-or-later
# Debian's hardening for programs that read untrusted input (pictures, movies, devices): a buffer overrun ends the
# program, and its tables are read-only once it runs. For optimised builds only; the sanitizers find more.
set(bw_optimised $<CONFIG:RelWithDebInfo,Release>)
target_compile_options(bw_options INTERFACE $<${bw_optimised}:-fstack-protector-strong>)
target_compile_definitions(bw_options INTERFACE $<${bw_optimised}:_FORTIFY_SOURCE=2>)
target_link_options(bw_options INTERFACE $<${bw_optimised}:LINKER:-z,relro,-z,now>)
