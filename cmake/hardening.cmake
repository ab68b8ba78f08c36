# SPDX-License-Identifier: Apache-2.0
# The programs read files of unknown origin. A fault of memory in them shall end the process before an attacker gains from
# it. Sanitizers see more, and don't get on with the checked functions of the C library.
set(ZAN_HARDENS OFF)
if(ZAN_HARDENED AND NOT ZAN_SANITIZED AND NOT ZAN_FUZZERS)
    set(ZAN_HARDENS ON)
endif()

# zan_harden(<target>): stack protector, checked functions of the C library, an address that differs from run to run,
# and tables of functions that are read-only by the time main() begins.
function(zan_harden target)
    if(NOT ZAN_HARDENS)
        return()
    endif()
    target_compile_options(${target} PRIVATE -fPIE -fstack-protector-strong)
    # The checked functions take an optimized build. Some distributions set a level of their own.
    set(optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    target_compile_options(${target} PRIVATE $<${optimized}:-U_FORTIFY_SOURCE> $<${optimized}:-D_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE -pie LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endfunction()
