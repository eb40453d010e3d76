# Runs the quickstart on its own sample table and looks for what it must print.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "the quickstart ended with ${result}:\n${output}")
endif()
foreach(expected "records: 4 .marked deleted: 1." "Чай чёрный +135.00 " "[*]  Сахар"
        "insert REMARK as column 2" "ЦЕНА +REMARK +НАЗВАНИЕ" "135.00 +Чай чёрный")
    if(NOT output MATCHES "${expected}")
        message(FATAL_ERROR "\"${expected}\" is missing in the output:\n${output}")
    endif()
endforeach()

# It does not write its copy over a pipe or a device.
execute_process(COMMAND ${PROGRAM} /nonexistent.dbf /dev/null ERROR_VARIABLE errors)
if(NOT errors MATCHES "no regular file")
    message(FATAL_ERROR "the quickstart would have replaced /dev/null: ${errors}")
endif()
