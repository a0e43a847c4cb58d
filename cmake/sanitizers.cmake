# The ways of building that instrument everything: KX_INSTRUMENT is empty or one of address,
# thread, coverage.
set(KX_INSTRUMENT "" CACHE STRING "Instrumentation of the whole build")

if(KX_INSTRUMENT STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(KX_INSTRUMENT STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
elseif(KX_INSTRUMENT STREQUAL "coverage")
    add_compile_options(--coverage -fprofile-update=atomic)  # threads share the counters
    add_link_options(--coverage)
    add_compile_definitions(KX_COVERAGE)
elseif(NOT KX_INSTRUMENT STREQUAL "")
    message(FATAL_ERROR "KX_INSTRUMENT: '${KX_INSTRUMENT}' is not address, thread or coverage")
endif()

if(KX_FUZZ)
    # The libraries, too, so that their coverage guides the fuzzer.
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
    add_link_options(-fsanitize=address,undefined)
endif()
