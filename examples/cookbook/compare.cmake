# Runs PROGRAM and fails unless it succeeds and prints exactly the bytes of the file EXPECTED.
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE printed)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} failed: ${result}\n${printed}")
endif()
file(READ ${EXPECTED} expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed:\n${printed}\nand not, as ${EXPECTED} has it:\n${expected}")
endif()
