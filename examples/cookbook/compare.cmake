# Runs PROGRAM and fails unless it succeeds and its output equals the file EXPECTED.
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE printed)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} failed: ${result}\n${printed}")
endif()
file(READ ${EXPECTED} expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed:\n${printed}\ninstead of ${EXPECTED}:\n${expected}")
endif()
