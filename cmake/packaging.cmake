# What is installed, and the Debian packages of it. The version is project()'s; the package files
# take it from there. Programs and CMake find their neighbours by relative paths, so that an
# installed tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KX_HEADERS_DIR "${CMAKE_INSTALL_INCLUDEDIR}/kxutil")
set(KX_JAR_DIR "${CMAKE_INSTALL_DATAROOTDIR}/java")
set(KX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/kxutil")
set(KX_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

foreach(name util osal)
    set_target_properties(kx${name} PROPERTIES EXPORT_NAME ${name})
endforeach()
install(TARGETS kxutil kxosal EXPORT kxutilTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime
    INCLUDES DESTINATION "${KX_HEADERS_DIR}")
foreach(folder util/export osal/export sharedinc)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/${folder}/" DESTINATION "${KX_HEADERS_DIR}/${folder}"
        COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*.inl")
endforeach()
if(KX_JAVA)
    install_jar(kxutil_java DESTINATION "${KX_JAR_DIR}" COMPONENT java)
    install_jar(kxutil_loggers DESTINATION "${KX_JAR_DIR}" COMPONENT java)
endif()

install(EXPORT kxutilTargets NAMESPACE kx:: DESTINATION "${KX_PACKAGE_DIR}"
    COMPONENT development)
configure_package_config_file(cmake/kxutilConfig.cmake.in kxutilConfig.cmake
    INSTALL_DESTINATION "${KX_PACKAGE_DIR}" PATH_VARS KX_JAR_DIR)
# Before 1.0 a new minor version may change an interface.
write_basic_package_version_file(kxutilConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/kxutilConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/kxutilConfigVersion.cmake" DESTINATION "${KX_PACKAGE_DIR}"
    COMPONENT development)

# Written when it is installed, because only then the prefix is known. A tree that has been moved is
# used with pkg-config's --define-prefix.
set(kx_pc_jar "")
if(KX_JAVA)
    set(kx_pc_jar "jar=\${datadir}/java/kxutil.jar\n")
endif()
file(CONFIGURE OUTPUT kxutil_pc.cmake @ONLY CONTENT [[
set(kx_version "@PROJECT_VERSION@")
set(kx_description "@PROJECT_DESCRIPTION@")
set(libdir "@CMAKE_INSTALL_LIBDIR@")
set(includedir "@CMAKE_INSTALL_INCLUDEDIR@")
set(datadir "@CMAKE_INSTALL_DATAROOTDIR@")
foreach(folder libdir includedir datadir)
    if(NOT IS_ABSOLUTE "${${folder}}")
        string(PREPEND ${folder} "\${prefix}/")
    endif()
endforeach()
set(jar "@kx_pc_jar@")
configure_file("@PROJECT_SOURCE_DIR@/cmake/kxutil.pc.in" "@CMAKE_CURRENT_BINARY_DIR@/kxutil.pc" @ONLY)
]])
install(SCRIPT "${CMAKE_CURRENT_BINARY_DIR}/kxutil_pc.cmake" COMPONENT development)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/kxutil.pc" DESTINATION "${KX_PKGCONFIG_DIR}"
    COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Kestrum developers <developers@kestrum.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_SET_DESTDIR ON)  # the prefix is the one that users will see
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://kestrum.invalid/kxutil")
# Dependencies are read from the libraries; one needs the other, which is in the same package.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_BINARY_DIR}/triggers")

function(kx_debian_package component name section architecture needs summary)
    string(TOUPPER "${component}" upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${name}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE "${architecture}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${needs}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${PROJECT_DESCRIPTION}, ${summary}
Module logging, option strings and typed arguments, a lenient JSON reader,
UTF-8, glob patterns, a growable array and a stream writer." PARENT_SCOPE)
endfunction()
set(kx_runtime "libkxutil (= ${PROJECT_VERSION})")
kx_debian_package(runtime libkxutil libs "" "" "shared libraries")
kx_debian_package(development libkxutil-dev libdevel "" "${kx_runtime}" "development files")
if(KX_JAVA)
    kx_debian_package(java libkxutil-java java all "libkxutil (>= ${PROJECT_VERSION})" "Java classes")
    list(APPEND CPACK_COMPONENTS_ALL java)
endif()
if(KX_DOCS)
    kx_debian_package(documentation libkxutil-doc doc all "" "documentation")
    list(APPEND CPACK_COMPONENTS_ALL documentation)
endif()

# Debug symbols are split off where the build has them; debuggers find them by the library's name.
if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" AND NOT KX_INSTRUMENT)
    kx_debian_package(debug libkxutil-dbg debug "" "${kx_runtime}" "debug symbols")
    list(APPEND CPACK_COMPONENTS_ALL debug)
    foreach(name kxosal kxutil)
        add_custom_command(TARGET ${name} POST_BUILD VERBATIM
            COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug $<TARGET_FILE:${name}> $<TARGET_FILE:${name}>.debug
            COMMAND "${CMAKE_OBJCOPY}" --strip-unneeded
                --add-gnu-debuglink=$<TARGET_FILE:${name}>.debug $<TARGET_FILE:${name}>)
        install(FILES $<TARGET_FILE:${name}>.debug COMPONENT debug
            DESTINATION "lib/debug${CMAKE_INSTALL_FULL_LIBDIR}")
    endforeach()
endif()

# Each package carries a list of changes in the distribution's format.
find_program(KX_GZIP gzip)
mark_as_advanced(KX_GZIP)
string(TIMESTAMP kx_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT changelog @ONLY CONTENT
"@PROJECT_NAME@ (@PROJECT_VERSION@) unstable; urgency=medium

  * The changes are listed in CHANGELOG.md of the sources.

 -- @CPACK_PACKAGE_CONTACT@  @kx_date@
")
if(KX_GZIP AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    execute_process(COMMAND "${KX_GZIP}" -9nfk changelog WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
    foreach(component ${CPACK_COMPONENTS_ALL})
        string(TOUPPER "${component}" upper)
        install(FILES "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz" COMPONENT ${component}
            DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    endforeach()
endif()
include(CPack)
