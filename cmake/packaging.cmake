# What is installed, and the Debian package of it. The version is project()'s; the package files
# take it from there. Everything finds its neighbours by relative paths, so that an installed tree
# may be moved.
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
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${KX_HEADERS_DIR}")
foreach(folder util/export osal/export sharedinc)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/${folder}/" DESTINATION "${KX_HEADERS_DIR}/${folder}"
        FILES_MATCHING PATTERN "*.h" PATTERN "*.inl")
endforeach()
if(KX_JAVA)
    install_jar(kxutil_java DESTINATION "${KX_JAR_DIR}")
    install_jar(kxutil_loggers DESTINATION "${KX_JAR_DIR}")
endif()

install(EXPORT kxutilTargets NAMESPACE kx:: DESTINATION "${KX_PACKAGE_DIR}")
configure_package_config_file(cmake/kxutilConfig.cmake.in kxutilConfig.cmake
    INSTALL_DESTINATION "${KX_PACKAGE_DIR}" PATH_VARS KX_JAR_DIR)
# Before 1.0 a new minor version may change an interface.
write_basic_package_version_file(kxutilConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/kxutilConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/kxutilConfigVersion.cmake" DESTINATION "${KX_PACKAGE_DIR}")

# Relative to the file's own folder, unless a folder was given as an absolute path.
set(kx_pc_prefix "${CMAKE_INSTALL_PREFIX}")
set(kx_pc_libdir "${CMAKE_INSTALL_FULL_LIBDIR}")
set(kx_pc_headers "${CMAKE_INSTALL_FULL_INCLUDEDIR}/kxutil")
set(kx_pc_jars "${CMAKE_INSTALL_FULL_DATAROOTDIR}/java")
if(NOT IS_ABSOLUTE "${KX_PKGCONFIG_DIR}")
    string(REGEX REPLACE "[^/]+" ".." kx_up "${KX_PKGCONFIG_DIR}")
    set(kx_pc_prefix "\${pcfiledir}/${kx_up}")
    set(kx_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(kx_pc_headers "\${prefix}/${KX_HEADERS_DIR}")
    set(kx_pc_jars "\${prefix}/${KX_JAR_DIR}")
endif()
set(kx_pc_jar "")
if(KX_JAVA)
    set(kx_pc_jar "jar=${kx_pc_jars}/kxutil.jar\n")
endif()
configure_file(cmake/kxutil.pc.in kxutil.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/kxutil.pc" DESTINATION "${KX_PKGCONFIG_DIR}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Kestrum developers <developers@kestrum.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# One of the libraries needs the other, which no package provides.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
include(CPack)
