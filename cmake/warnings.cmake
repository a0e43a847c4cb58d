# Warnings for our own code, as errors.
function(kx_enable_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
        -Wformat=2 -Wundef -Wno-format-nonliteral -Werror)
endfunction()
