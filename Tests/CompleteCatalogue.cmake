# Checks that a catalogue of the example has exactly the texts of the sources, all translated.
#
# cmake -D LUPDATE=<program> -D SOURCES=<root of the project> -D CATALOGUE=<file in it> -D COPY=<file to write>
#       -P CompleteCatalogue.cmake

# The copy becomes what the target `translations` would write into the catalogue.
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
    message(FATAL_ERROR "${CATALOGUE} has ${CMAKE_MATCH_1} texts")
endif()
