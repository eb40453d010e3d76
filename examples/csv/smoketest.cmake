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

# Exporting replaces neither the table itself, under whatever name, nor a pipe.
file(SHA256 ${FOLDER}/IBM866.dbf before)
file(CREATE_LINK ${FOLDER}/IBM866.dbf ${FOLDER}/hard.csv)
file(CREATE_LINK IBM866.dbf ${FOLDER}/symbolic.csv SYMBOLIC)
execute_process(COMMAND mkfifo ${FOLDER}/pipe.csv)
foreach(target IBM866.dbf hard.csv symbolic.csv pipe.csv)
    run_csv(1 export ${FOLDER}/IBM866.dbf ${FOLDER}/${target})
endforeach()
file(SHA256 ${FOLDER}/IBM866.dbf after)
execute_process(COMMAND test -p ${FOLDER}/pipe.csv RESULT_VARIABLE result)
if(NOT before STREQUAL after OR NOT result EQUAL 0)
    message(FATAL_ERROR "an export replaced its table or a pipe")
endif()

# An import that is killed while it waits for more leaves no table, only a part.
execute_process(COMMAND sh -c "
    mkfifo '${FOLDER}/slow.csv'
    '${PROGRAM}' import '${FOLDER}/slow.csv' '${FOLDER}/killed.dbf' & importer=$!
    exec 3>'${FOLDER}/slow.csv'
    echo A:C:3 >&3
    awk 'BEGIN { for (i = 0; i < 100000; ++i) print \"abc\" }' >&3
    tries=0
    until ls '${FOLDER}'/killed.dbf* >'${FOLDER}/listing' 2>&1 || [ $tries -gt 100 ]; do
        tries=$((tries + 1))
        sleep 0.1
    done
    kill -9 $importer
    wait $importer
    test ! -e '${FOLDER}/killed.dbf' && grep -q part '${FOLDER}/listing'" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "an import that was killed left a table behind")
endif()

# No message holds a whole cell of any length.
string(REPEAT "x" 100000 long)
file(WRITE ${FOLDER}/long.csv "A:C:3\n${long}\n")
execute_process(COMMAND ${PROGRAM} import ${FOLDER}/long.csv ${FOLDER}/long.dbf ERROR_VARIABLE errors)
string(LENGTH "${errors}" length)
if(length GREATER 300)
    message(FATAL_ERROR "a message of ${length} characters")
endif()
