# Installs the library, its public headers, its CMake package and its pkg-config file. All of them
# find each other by relative paths, so the installed tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${DBFTABLE_PACKAGE})
set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}${DBFTABLE_INCLUDE_SUBDIR})
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

target_include_directories(dbftable PUBLIC $<INSTALL_INTERFACE:${include_dir}>)
install(TARGETS dbftable EXPORT ${DBFTABLE_PACKAGE}-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
foreach(header IN LISTS public_headers)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${header}
        DESTINATION ${include_dir}/dbf/${folder}
        COMPONENT development)
endforeach()

install(EXPORT ${DBFTABLE_PACKAGE}-targets
    NAMESPACE ${DBFTABLE_NAMESPACE}::
    DESTINATION ${package_dir}
    COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}-config.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}-config-version.cmake
    VERSION ${PROJECT_VERSION}
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}-config-version.cmake
    DESTINATION ${package_dir}
    COMPONENT development)

# The folders as the pkg-config file names them: relative to its own, unless they are absolute.
file(RELATIVE_PATH pkgconfig_to_prefix
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(folder INCLUDEDIR LIBDIR)
    set(pkgconfig_${folder} ${CMAKE_INSTALL_${folder}})
    if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
        set(pkgconfig_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
list(TRANSFORM DBFTABLE_QT_MODULES APPEND " >= ${DBFTABLE_QT_VERSION}" OUTPUT_VARIABLE
    pkgconfig_requires)
list(JOIN pkgconfig_requires ", " pkgconfig_requires)
set(pkgconfig_INCLUDEDIR ${pkgconfig_INCLUDEDIR}${DBFTABLE_INCLUDE_SUBDIR})
get_target_property(library_type dbftable TYPE)
set(pkgconfig_definitions "")
if(library_type STREQUAL STATIC_LIBRARY)
    set(pkgconfig_definitions " -DDBFTABLE_STATIC")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/pkgconfig.pc.in
    ${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${DBFTABLE_PACKAGE}.pc
    DESTINATION ${pkgconfig_dir}
    COMPONENT development)
