# Lets CPack make three Debian packages: the library alone, what is needed to build with it, and the
# command.
include(GNUInstallDirs)

set(runtime_package ${DBFTABLE_RUNTIME_PACKAGE})
set(development_package lib${DBFTABLE_PACKAGE}-dev)
set(tools_package dbftable-tools)
set(debian_release 1)
set(DBFTABLE_MAINTAINER "the dbftable authors <dbftable@example.org>" CACHE STRING
    "Maintainer of the Debian packages, name and mail address")

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian)
configure_file(cmake/changelog.Debian.in ${changelog} @ONLY)
execute_process(COMMAND gzip -9 --no-name --force --keep ${changelog})
set(components runtime development)
if(DBFTABLE_BUILD_TOOLS)
    list(APPEND components tools)
endif()
foreach(component IN LISTS components)
    set(package ${${component}_package})
    set(documents ${CMAKE_INSTALL_DATADIR}/doc/${package})
    install(FILES LICENSE DESTINATION ${documents} RENAME copyright COMPONENT ${component})
    install(FILES ${changelog}.gz DESTINATION ${documents} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME dbftable)
set(CPACK_PACKAGE_VENDOR "the dbftable authors")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${DBFTABLE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_RELEASE ${debian_release})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/cmake/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Reads, updates, appends, creates and restructures DBF table files on any
QIODevice.

This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}-${debian_release}), ${DBFTABLE_QT_PACKAGES}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Reads, updates, appends, creates and restructures DBF table files on any
QIODevice.

This package contains the headers, the CMake package and the pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_package})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/dbf)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Reads, updates, appends, creates and restructures DBF table files on any
QIODevice.

This package contains the command dbftable, which looks into tables, makes them of CSV texts
and back, checks, repairs, packs, recodes and restructures them.")

include(CPack)
