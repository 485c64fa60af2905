# What is installed, in two parts: the libraries for programs that run, and what it takes to build such programs.
include(CMakePackageConfigHelpers)

install(TARGETS qelcv qelcore EXPORT qelcvTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(FILES include/qelcv.h include/qelcore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(DIRECTORY include/qelcv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN *.h)
install(FILES cmake/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqelcvt7 COMPONENT runtime)
install(FILES cmake/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqelcv-dev COMPONENT dev)

# find_package(qelcv) gives qelcv::qelcv and qelcv::core.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qelcv)
install(EXPORT qelcvTargets NAMESPACE qelcv:: FILE qelcvTargets.cmake DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(cmake/qelcvConfig.cmake.in qelcvConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(qelcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qelcvConfig.cmake ${PROJECT_BINARY_DIR}/qelcvConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT dev)

# pkg-config qelcv, qelcore. Paths are relative to the file, so that an installed tree can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH up_from_pkgconfig /${pkgconfig_dir} /)
foreach(name qelcv qelcore)
    configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir} COMPONENT dev)
endforeach()

# Debian packages, one set per architecture; both sets may be installed at once.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The qelcv maintainers <maintainers@users.noreply.c-seed-2763444f.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# CPack has no setting for Multi-Arch: the field follows that of the section.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqelcvt7)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs\nMulti-Arch: same")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Plain C functions over the pixels of images in memory. Their kernels are
chosen at run time for SSSE3, SSE4, AVX2 or AVX-512 and give the same bits
on all of them.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libqelcv-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION "libdevel\nMulti-Arch: same")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libqelcvt7 (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers, pkg-config files and the CMake package of libqelcvt7.")
include(CPack)
