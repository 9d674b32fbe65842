# Runs -Dprogram=COMMAND;ARGUMENT... and compares its standard output with the file -Dexpected=PATH.

list(REMOVE_ITEM program "")
execute_process(COMMAND ${program} OUTPUT_VARIABLE actual RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ended with ${status} after printing:\n${actual}")
endif()
file(READ ${expected} wanted)
if(NOT actual STREQUAL wanted)
    message(FATAL_ERROR "${expected} says:\n${wanted}\nbut ${program} printed:\n${actual}")
endif()
