# Lets the instruments draw themselves for three seconds on DEVICE, and looks at the picture.
# TAVSIM, INSTRUMENTS and CHECK_PICTURE are programs.
set(PICTURE ${CMAKE_CURRENT_BINARY_DIR}/instruments-${DEVICE}.bmp)
file(REMOVE ${PICTURE})
set(ENV{SDL_VIDEODRIVER} dummy)
execute_process(COMMAND ${TAVSIM} run --device ${DEVICE} --virtual-time
                        ${INSTRUMENTS} --frames 150 --screenshot ${PICTURE}
                RESULT_VARIABLE STATUS)
if(NOT STATUS EQUAL 0)
    message(FATAL_ERROR "The instruments ended with ${STATUS}")
endif()
execute_process(COMMAND ${CHECK_PICTURE} ${PICTURE} ${WIDTH} ${HEIGHT} RESULT_VARIABLE STATUS)
if(NOT STATUS EQUAL 0)
    message(FATAL_ERROR "${PICTURE} is not as it should be")
endif()
