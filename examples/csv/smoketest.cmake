# Makes a table of a text, a text of that table, and expects the first text back byte by byte.
# Then expects that texts with a mistake are refused and leave no table behind.

function(run_csv expected_result)
    execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
    if(NOT result EQUAL expected_result)
        message(FATAL_ERROR "csv ${ARGN} ended with ${result}: ${errors}")
    endif()
endfunction()

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
foreach(codec Windows-1251 IBM866)
    run_csv(0 --codec ${codec} import ${GOODS} ${FOLDER}/${codec}.dbf)
    run_csv(0 --deleted export ${FOLDER}/${codec}.dbf ${FOLDER}/${codec}.csv)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${GOODS} ${FOLDER}/${codec}.csv
        RESULT_VARIABLE differs)
    if(differs)
        message(FATAL_ERROR "${FOLDER}/${codec}.csv differs from ${GOODS}")
    endif()
endforeach()

# A table that is there already is not overwritten.
run_csv(1 import ${GOODS} ${FOLDER}/IBM866.dbf)
if(NOT EXISTS ${FOLDER}/IBM866.dbf)
    message(FATAL_ERROR "an import that was refused removed a table")
endif()

foreach(text "A:C:3\nabcd" "A:C:3\n日" "A:N:3\nx1" "A:N:3\n1234" "A:D:8\n2024-02-30" "A:L:1\nJ"
        "A:C:3\na,b" "A:C:3\n\"a" "A:C:3\n\"a\"b" "A:D:9\n" "A\nb" "")
    file(WRITE ${FOLDER}/bad.csv "${text}")
    run_csv(1 import ${FOLDER}/bad.csv ${FOLDER}/bad.dbf)
    if(EXISTS ${FOLDER}/bad.dbf)
        message(FATAL_ERROR "the refused text left a table behind:\n${text}")
    endif()
endforeach()
