# Compiles against musl as Debian's musl-tools has it, with the system's compiler. The libraries
# need only headers of C++, for which those of that compiler are right; programs that need the C++
# library cannot be linked.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(KX_CXX_RUNTIME OFF)

function(kx_ask_compiler question variable)
    execute_process(COMMAND g++ ${question} OUTPUT_VARIABLE answer
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${answer}" PARENT_SCOPE)
endfunction()
kx_ask_compiler(-dumpversion kx_version)
kx_ask_compiler(-print-multiarch kx_system)
kx_ask_compiler(-print-file-name=include kx_builtin)
string(REGEX REPLACE "-gnu$" "-musl" kx_musl "${kx_system}")
string(JOIN " " CMAKE_C_FLAGS_INIT -nostdinc -isystem "/usr/include/${kx_musl}" -isystem "${kx_builtin}")
string(JOIN " " CMAKE_CXX_FLAGS_INIT -nostdinc++ -include "${CMAKE_CURRENT_LIST_DIR}/standard_headers.h"
    -isystem "/usr/include/c++/${kx_version}" -isystem "/usr/include/${kx_system}/c++/${kx_version}"
    ${CMAKE_C_FLAGS_INIT})
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-specs=/usr/lib/${kx_musl}/musl-gcc.specs -Wl,--as-needed")
endforeach()
