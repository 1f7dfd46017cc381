# Tests of what a newcomer reads and runs first: the instruments example, the programs in the
# documents, the reference manual.

add_test(NAME instruments COMMAND tavsim test --program $<TARGET_FILE:instruments>
                                  ${CMAKE_CURRENT_SOURCE_DIR}/instruments)

set(SANITIZER_FLAGS)
if(TAV_SANITIZE)
    set(SANITIZER_FLAGS -fsanitize=${TAV_SANITIZE})
endif()
foreach(TEXT README.md docs/guide.md docs/page.md docs/simulator.md docs/testing.md)
    get_filename_component(NAME ${TEXT} NAME_WE)
    string(TOLOWER programs_in_${NAME} NAME)
    add_test(NAME ${NAME}
             COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check_snippets.sh $<TARGET_FILE:tavsim>
                     ${CMAKE_CURRENT_BINARY_DIR}/${NAME} ${PROJECT_SOURCE_DIR}/${TEXT}
                     ${CMAKE_C_COMPILER} -std=c99 -Wall -Wextra -Wno-unused-parameter -Werror
                     -I${PROJECT_SOURCE_DIR}/include ${SDL_CFLAGS} ${SANITIZER_FLAGS}
                     $<TARGET_FILE:tav_simulator> $<TARGET_FILE:tav> ${SDL_LDFLAGS}
                     -Wl,-rpath,$<TARGET_FILE_DIR:tav>)
    set_tests_properties(${NAME} PROPERTIES TIMEOUT ${TAV_LONGEST_PROGRAM})
endforeach()

find_program(DOXYGEN doxygen)
if(DOXYGEN)
    add_test(NAME reference COMMAND ${DOXYGEN} docs/Doxyfile
             WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
else()
    message(STATUS "doxygen is missing: the test of the reference is left out")
endif()

add_test(NAME documented COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check_documented.sh
                                 $<TARGET_FILE:tavsim> ${PROJECT_SOURCE_DIR})
