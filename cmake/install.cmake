# What `cmake --install` puts in place. Every path in it is relative to the place, so the whole can
# be moved. The components (library, development, tavsim, page, python, documentation) are what
# distributions make packages of.
include(CMakePackageConfigHelpers)

set(TAV_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tav)
set(TAV_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# tav_install_library(TARGET EXPORT COMPONENT LINK_COMPONENT): programs need the first component to
# run, and the second to be linked.
function(tav_install_library TARGET EXPORT COMPONENT LINK_COMPONENT)
    install(TARGETS ${TARGET} EXPORT ${EXPORT}
            LIBRARY COMPONENT ${COMPONENT} NAMELINK_COMPONENT ${LINK_COMPONENT})
endfunction()

set_target_properties(tav PROPERTIES INSTALL_RPATH $ORIGIN)
tav_install_library(tav tavTargets library development)
install(FILES LICENSE TYPE DOC COMPONENT library)
install(FILES include/tav.h TYPE INCLUDE COMPONENT development)
install(EXPORT tavTargets NAMESPACE tav:: DESTINATION ${TAV_CMAKE_DIR} COMPONENT development)
if(TAV_PLATFORM_LIBRARIES)
    set(TAV_PLATFORM_NAMES ${TAV_PLATFORM_LIBRARIES})
else()
    set(TAV_PLATFORM_NAMES tavsim)
    if(TAV_LINUX)
        tav_install_library(tav_linux tavTargets library development)
        set(TAV_PLATFORM_NAMES tavlinux)
    endif()
endif()
if(TAV_TOOLS)
    tav_install_library(tav_simulator tavsimTargets tavsim tavsim)
    file(RELATIVE_PATH TAV_LIBRARIES_FROM_TOOLS /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(tavsim tavsim_panel tav_page PROPERTIES
                          INSTALL_RPATH $ORIGIN/${TAV_LIBRARIES_FROM_TOOLS})
    install(TARGETS tavsim EXPORT tavsimTargets RUNTIME COMPONENT tavsim)
    install(TARGETS tavsim_panel RUNTIME COMPONENT tavsim)
    install(EXPORT tavsimTargets NAMESPACE tav:: DESTINATION ${TAV_CMAKE_DIR} COMPONENT tavsim)
    install(FILES cmake/tavsim_add_test.cmake DESTINATION ${TAV_CMAKE_DIR} COMPONENT tavsim)
    install(FILES tools/completion.bash RENAME tavsim
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tavsim)
    install(FILES include/tavsim.h TYPE INCLUDE COMPONENT tavsim)
    install(DIRECTORY simulator/devices DESTINATION ${TAV_DATA_DIR} COMPONENT tavsim)
    install(DIRECTORY tools/new/project/ DESTINATION ${TAV_DATA_DIR}/new USE_SOURCE_PERMISSIONS
            COMPONENT tavsim)
    install(DIRECTORY tools/panel/page/ tools/web/page/ DESTINATION ${TAV_DATA_DIR}/panel
            COMPONENT tavsim)
    install(FILES docs/tavsim.1 docs/tavsim-panel.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tavsim)
    install(TARGETS tav_page RUNTIME COMPONENT page)
    install(DIRECTORY tools/page/script/ tools/web/page/ DESTINATION ${TAV_DATA_DIR}/page
            COMPONENT page)
    install(FILES docs/tav-page.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT page)
    install(DIRECTORY python/tavsim DESTINATION ${TAV_PYTHON_DIR} COMPONENT python
            FILES_MATCHING PATTERN *.py PATTERN py.typed PATTERN __pycache__ EXCLUDE)
endif()

configure_package_config_file(cmake/tavConfig.cmake.in ${PROJECT_BINARY_DIR}/tavConfig.cmake
                              INSTALL_DESTINATION ${TAV_CMAKE_DIR}
                              PATH_VARS TAV_PYTHON_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavConfig.cmake ${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
        DESTINATION ${TAV_CMAKE_DIR} COMPONENT development)

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
install(FILES ${PROJECT_BINARY_DIR}/tav.pc DESTINATION ${TAV_PKGCONFIG_DIR}
        COMPONENT development)
if(TAV_TOOLS)
    configure_file(cmake/tavsim.pc.in ${PROJECT_BINARY_DIR}/tavsim.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tavsim.pc DESTINATION ${TAV_PKGCONFIG_DIR}
            COMPONENT tavsim)
endif()
