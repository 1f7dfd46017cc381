# What a newcomer reads and runs first: the instruments, the programs in the texts, the reference.

add_executable(check_picture check_picture.c)
target_link_libraries(check_picture PRIVATE tav_warnings PkgConfig::SDL)
foreach(DEVICE quern.320x400 harrow.320x480 cinnabar.480x800 ember.1024x768 unknown.320x480)
    string(REGEX MATCH "(.*)\\.(.*)x(.*)" _ ${DEVICE})
    add_test(NAME instruments_${CMAKE_MATCH_1}
             COMMAND ${CMAKE_COMMAND} -DDEVICE=${CMAKE_MATCH_1} -DWIDTH=${CMAKE_MATCH_2}
                     -DHEIGHT=${CMAKE_MATCH_3} -DTAVSIM=$<TARGET_FILE:tavsim>
                     -DINSTRUMENTS=$<TARGET_FILE:instruments>
                     -DCHECK_PICTURE=$<TARGET_FILE:check_picture>
                     -P ${CMAKE_CURRENT_SOURCE_DIR}/check_instruments.cmake)
    # A sanitizer's run-time library minds that the simulator is preloaded in front of it.
    set_tests_properties(instruments_${CMAKE_MATCH_1} PROPERTIES
        TIMEOUT 120 ENVIRONMENT ASAN_OPTIONS=verify_asan_link_order=0)
endforeach()
