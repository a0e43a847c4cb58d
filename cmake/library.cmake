include(CheckLinkerFlag)
set(KX_VERSION_NOTE
    "SHELL:-Xlinker '--package-metadata={\"name\":\"${PROJECT_NAME}\",\"version\":\"${PROJECT_VERSION}\"}'")
check_linker_flag(CXX "${KX_VERSION_NOTE}" KX_HAS_VERSION_NOTE)

# A shared library of ours: hidden visibility, an export map that the linker enforces, its
# neighbours found in its own folder, and at run time no library except those named here and libc.
function(kx_add_library name map)
    add_library(${name} SHARED ${ARGN})
    kx_enable_warnings(${name})
    target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    target_compile_options(${name} PRIVATE
        -fno-exceptions -fno-rtti -fvisibility=hidden -fno-plt
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    # Our own functions are called directly; only the platform layer's can be interposed.
    target_link_options(${name} PRIVATE
        "LINKER:--version-script=${map}" LINKER:-Bsymbolic-functions
        LINKER:--no-undefined-version LINKER:-z,relro,-z,now,-z,noexecstack,-z,text)
    if(KX_INSTRUMENT STREQUAL "coverage")  # each copy of an inlined function counts branches of its own
        target_compile_definitions(${name} PRIVATE always_inline=unused)
    endif()
    if(KX_HAS_VERSION_NOTE)
        target_link_options(${name} PRIVATE "${KX_VERSION_NOTE}")
    endif()
    # No version in the file names: the virtual machine loads the library by its plain name, and a
    # platform layer that replaces ours has the same one.
    set_target_properties(${name} PROPERTIES
        LINK_DEPENDS "${map}"
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "$ORIGIN")
    if(NOT KX_INSTRUMENT AND NOT KX_FUZZ)
        # Stack guards for functions with arrays of characters, which run once per line, document or
        # call. The strong form would add a check to every number that the JSON reader delivers, to
        # each reading of the clock and to each glob match.
        target_compile_options(${name} PRIVATE -fstack-protector
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
        # Without the C++ library; static helpers of the compiler are allowed.
        target_link_options(${name} PRIVATE -nodefaultlibs LINKER:-z,defs)
        target_link_libraries(${name} PRIVATE c gcc)
    endif()
endfunction()
