# Checks which texts lupdate finds in the libraries' sources, and in which contexts. An application's catalogue is made
# from them: a text that lupdate does not find, or finds in another context, stays untranslated.
#
# cmake -D LUPDATE=<program> -D SOURCES=<root of the project> -D CATALOGUE=<file to write> -P TranslatableTexts.cmake

set(expected
    "[DirectoryUtilsValidPath]"
    "%1: %2"
    "[PathValidation]"
    "No folder is given"
    "The folder does not exist"
    "This is not a folder"
    "The folder cannot be read"
    "The folder cannot be written to"
    "The disk is full")

file(REMOVE "${CATALOGUE}")
execute_process(
    COMMAND "${LUPDATE}" -silent -locations none "${SOURCES}/Core" "${SOURCES}/Lib" "${SOURCES}/Util" -ts "${CATALOGUE}"
    OUTPUT_QUIET ERROR_QUIET
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "lupdate failed: ${result}")
endif()

file(READ "${CATALOGUE}" catalogue)
string(REGEX MATCHALL "<(name|source|comment)>[^<]*<" entries "${catalogue}")
set(found "")
foreach(entry IN LISTS entries)
    string(REGEX REPLACE "^<name>([^<]*)<" "[\\1]" entry "${entry}")
    string(REGEX REPLACE "^<source>([^<]*)<" "\\1" entry "${entry}")
    list(APPEND found "${entry}")
endforeach()

if(NOT found STREQUAL expected)
    string(REPLACE ";" "\n  " found "${found}")
    message(FATAL_ERROR "lupdate finds other texts than expected:\n  ${found}")
endif()
