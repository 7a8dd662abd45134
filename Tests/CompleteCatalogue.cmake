# A catalogue of the example has every text that there is, translated, and no other.
#
# cmake -D LUPDATE=<program> -D SOURCES=<root of the project> -D CATALOGUE=<file in it> -D COPY=<file to write>
#       -P CompleteCatalogue.cmake

# A new copy is what the target `translations` would make of the catalogue.
file(READ "${SOURCES}/${CATALOGUE}" catalogue)
file(WRITE "${COPY}" "${catalogue}")
execute_process(
    COMMAND "${LUPDATE}" -silent -locations none -I . Examples/RecordingsFolder Core Util Lib -ts "${COPY}"
    WORKING_DIRECTORY "${SOURCES}"
    OUTPUT_QUIET ERROR_QUIET
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "lupdate failed: ${result}")
endif()

file(READ "${COPY}" updated)
if(NOT updated STREQUAL catalogue)
    message(FATAL_ERROR "The texts have changed: build the target translations and translate what is new in ${CATALOGUE}")
endif()
if(catalogue MATCHES "type=\"(unfinished|vanished|obsolete)\"")
    message(FATAL_ERROR "${CATALOGUE} has texts that are ${CMAKE_MATCH_1}")
endif()
