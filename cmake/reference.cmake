# The reference of functions and classes from their comments: the target kxutil_reference, made with the
# rest when KX_DOCS is on, and what tests/docs needs to make it once more.
set(kx_required QUIET)
if(KX_DOCS)
    set(kx_required REQUIRED)
endif()
find_package(Doxygen ${kx_required})
find_package(Python3 ${kx_required} COMPONENTS Interpreter)
if(NOT DOXYGEN_FOUND OR NOT Python3_FOUND)
    return()
endif()

# Called with the folder in between. Without a development kit for Java the last argument is empty.
set(KX_REFERENCE "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/reference.py" "${PROJECT_SOURCE_DIR}")
set(KX_REFERENCE_TOOLS "${PROJECT_VERSION}" "${DOXYGEN_EXECUTABLE}" ${Java_JAVADOC_EXECUTABLE})

set(kx_reference "${PROJECT_BINARY_DIR}/reference")
file(GLOB_RECURSE kx_documented CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/*.h" "${PROJECT_SOURCE_DIR}/src/*.java")
add_custom_command(OUTPUT "${kx_reference}/html/index.html"
    COMMAND ${KX_REFERENCE} "${kx_reference}" ${KX_REFERENCE_TOOLS}
    DEPENDS ${kx_documented} "${PROJECT_SOURCE_DIR}/scripts/reference.py" VERBATIM)
if(KX_DOCS)
    set(kx_all ALL)
endif()
add_custom_target(kxutil_reference ${kx_all} DEPENDS "${kx_reference}/html/index.html")
if(KX_DOCS AND KX_INSTALL)
    include(GNUInstallDirs)
    install(DIRECTORY "${kx_reference}/html" COMPONENT documentation
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${PROJECT_NAME}")
endif()
