# What `cmake --install` puts in place. Every path in it is relative to the place, so the whole can
# be moved.
include(CMakePackageConfigHelpers)

set(TAV_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tav)
set(TAV_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(TAV_INSTALLED_LIBRARIES tav)
set_target_properties(tav PROPERTIES INSTALL_RPATH $ORIGIN)
if(TAV_PLATFORM_LIBRARIES)
    set(TAV_PLATFORM_NAMES ${TAV_PLATFORM_LIBRARIES})
else()
    list(APPEND TAV_INSTALLED_LIBRARIES tav_simulator)
    set(TAV_PLATFORM_NAMES tavsim)
    if(TAV_LINUX)
        list(APPEND TAV_INSTALLED_LIBRARIES tav_linux)
        set(TAV_PLATFORM_NAMES tavlinux)
    endif()
    file(RELATIVE_PATH TAV_LIBRARIES_FROM_TOOLS /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(tavsim tavsim_panel tav_page PROPERTIES
                          INSTALL_RPATH $ORIGIN/${TAV_LIBRARIES_FROM_TOOLS})
    install(TARGETS tavsim EXPORT tavTargets)
    install(TARGETS tavsim_panel tav_page)
    install(FILES cmake/tavsim_add_test.cmake DESTINATION ${TAV_CMAKE_DIR})
    install(FILES tools/completion.bash RENAME tavsim
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES include/tavsim.h TYPE INCLUDE)
    install(DIRECTORY python/tavsim DESTINATION ${TAV_PYTHON_DIR}
            FILES_MATCHING PATTERN *.py PATTERN py.typed PATTERN __pycache__ EXCLUDE)
    install(DIRECTORY simulator/devices DESTINATION ${TAV_DATA_DIR})
    install(DIRECTORY tools/panel/page/ tools/web/page/ DESTINATION ${TAV_DATA_DIR}/panel)
    install(DIRECTORY tools/page/script/ tools/web/page/ DESTINATION ${TAV_DATA_DIR}/page)
    install(FILES docs/tavsim.1 docs/tav-page.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

install(TARGETS ${TAV_INSTALLED_LIBRARIES} EXPORT tavTargets)
install(FILES include/tav.h TYPE INCLUDE)
install(FILES LICENSE TYPE DOC)

install(EXPORT tavTargets NAMESPACE tav:: DESTINATION ${TAV_CMAKE_DIR})
configure_package_config_file(cmake/tavConfig.cmake.in ${PROJECT_BINARY_DIR}/tavConfig.cmake
                              INSTALL_DESTINATION ${TAV_CMAKE_DIR}
                              PATH_VARS TAV_PYTHON_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavConfig.cmake ${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
        DESTINATION ${TAV_CMAKE_DIR})

# A platform library is named as the linker takes it: a name, a path or an option.
set(TAV_PLATFORM_FLAGS)
foreach(NAME ${TAV_PLATFORM_NAMES})
    if(NAME MATCHES "^[-/]")
        string(APPEND TAV_PLATFORM_FLAGS " ${NAME}")
    else()
        string(APPEND TAV_PLATFORM_FLAGS " -l${NAME}")
    endif()
endforeach()
file(RELATIVE_PATH TAV_PREFIX_FROM_PKGCONFIG /${TAV_PKGCONFIG_DIR} /)
string(REGEX REPLACE "/$" "" TAV_PREFIX_FROM_PKGCONFIG ${TAV_PREFIX_FROM_PKGCONFIG})
configure_file(cmake/tav.pc.in ${PROJECT_BINARY_DIR}/tav.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tav.pc DESTINATION ${TAV_PKGCONFIG_DIR})
if(NOT TAV_PLATFORM_LIBRARIES)
    configure_file(cmake/tavsim.pc.in ${PROJECT_BINARY_DIR}/tavsim.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tavsim.pc DESTINATION ${TAV_PKGCONFIG_DIR})
endif()
