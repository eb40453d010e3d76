# Finds the chosen Qt, and says what everything is called that is built with it. Qt 6 has names of its
# own beside those of Qt 5, so that both can lie in one prefix.
if(DBFTABLE_QT_MAJOR STREQUAL "5")
    set(DBFTABLE_QT_VERSION 5.15)
    set(DBFTABLE_QT_MODULES Qt5Core)
    set(DBFTABLE_QT_LIBRARIES Qt5::Core)
    set(DBFTABLE_PACKAGE dbftable)
    set(DBFTABLE_NAMESPACE DbfTable)
    set(DBFTABLE_INCLUDE_SUBDIR "")
elseif(DBFTABLE_QT_MAJOR STREQUAL "6")
    set(DBFTABLE_QT_VERSION 6.4)
    set(DBFTABLE_QT_MODULES Qt6Core Qt6Core5Compat) # QTextCodec is in the interface.
    set(DBFTABLE_QT_LIBRARIES Qt6::Core Qt6::Core5Compat)
    set(DBFTABLE_PACKAGE dbftable6)
    set(DBFTABLE_NAMESPACE DbfTable6)
    set(DBFTABLE_INCLUDE_SUBDIR /dbftable6)
else()
    message(FATAL_ERROR "DBFTABLE_QT_MAJOR is \"${DBFTABLE_QT_MAJOR}\", but must be 5 or 6")
endif()
set(DBFTABLE_QT Qt${DBFTABLE_QT_MAJOR})

foreach(module IN LISTS DBFTABLE_QT_MODULES)
    find_package(${module} ${DBFTABLE_QT_VERSION} REQUIRED)
endforeach()
