# A test for ctest: scenarios that a program is taken through on a simulated device.
#
#   tavsim_add_test(NAME FILE|FOLDER... [PROGRAM TARGET|FILE] [DEVICE NAME|FILE])
#
# The test passes when all of the scenarios do, and *.scenario below each folder. Relative names are
# looked for from the current source folder. The program, a target or a file, and the device, which
# is a file where it holds a '/' or ends in .json, take the place of those that the scenarios name.
function(tavsim_add_test NAME)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "PROGRAM;DEVICE" "")
    if(NOT ARG_UNPARSED_ARGUMENTS OR ARG_KEYWORDS_MISSING_VALUES)
        message(FATAL_ERROR "usage: tavsim_add_test(NAME FILE|FOLDER... [PROGRAM TARGET|FILE] "
                            "[DEVICE NAME|FILE])")
    endif()
    set(OPTIONS)
    if(TARGET "${ARG_PROGRAM}")
        list(APPEND OPTIONS --program "$<TARGET_FILE:${ARG_PROGRAM}>")
    elseif(ARG_PROGRAM)
        get_filename_component(PROGRAM "${ARG_PROGRAM}" ABSOLUTE)
        list(APPEND OPTIONS --program "${PROGRAM}")
    endif()
    if(ARG_DEVICE MATCHES "/|\\.json$")
        get_filename_component(ARG_DEVICE "${ARG_DEVICE}" ABSOLUTE)
    endif()
    if(ARG_DEVICE)
        list(APPEND OPTIONS --device "${ARG_DEVICE}")
    endif()
    set(SCENARIOS)
    foreach(SCENARIO IN LISTS ARG_UNPARSED_ARGUMENTS)
        get_filename_component(FILE "${SCENARIO}" ABSOLUTE)
        if(NOT EXISTS "${FILE}")
            message(FATAL_ERROR "tavsim_add_test(${NAME}): there is no ${FILE}")
        endif()
        list(APPEND SCENARIOS "${FILE}")
    endforeach()
    add_test(NAME "${NAME}" COMMAND tav::tavsim test ${OPTIONS} -- ${SCENARIOS})
endfunction()
