# Warnings for our own code; errors in the builds of CMakePresets.json.
function(kx_enable_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
        -Wformat=2 -Wundef -Wno-format-nonliteral $<$<BOOL:${KX_WERROR}>:-Werror>)
endfunction()
