# Runs COMMAND, a list, and compares what it prints, on either output, with the file EXPECTED.
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE PRINTED ERROR_VARIABLE PRINTED
                RESULT_VARIABLE STATUS)
file(READ ${EXPECTED} WANTED)
if(NOT STATUS EQUAL 0)
    message(FATAL_ERROR "The program ended with ${STATUS}:\n${PRINTED}")
endif()
if(NOT PRINTED STREQUAL WANTED)
    message(FATAL_ERROR "It printed:\n${PRINTED}\nExpected:\n${WANTED}")
endif()
