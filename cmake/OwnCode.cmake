# What every target made of this project's own code has in common.

# The warnings are g++'s; they are errors only where a preset asks for it, so that a newer compiler
# does not stop anybody from building.
function(kelvofxds_own_code target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion
                           $<$<BOOL:${KELVOFXDS_WERROR}>:-Werror>)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|i[3-6]86)$")
        # No x87: a double has the same 64 bits in a register as in memory.
        target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse)
    endif()
endfunction()
