# Fails unless LIBRARY exports exactly the symbol EXPECTED. NM lists symbols.
execute_process(COMMAND "${NM}" -D --defined-only --format=just-symbols "${LIBRARY}"
    OUTPUT_VARIABLE symbols OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols STREQUAL EXPECTED)
    message(FATAL_ERROR "${LIBRARY} exports:\n${symbols}")
endif()
