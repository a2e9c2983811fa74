# Runs one program, which must exit with 0 and write exactly the expected
# texts: cmake -DCMD=program [-DARGS="arg ..."] -DOUT=expected-stdout
#   [-DERR=expected-stderr] -P expect.cmake      (without ERR: no stderr)
separate_arguments(args UNIX_COMMAND "${ARGS}")
execute_process(COMMAND ${CMD} ${args} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
file(READ ${OUT} want_out)
set(want_err "")
if(DEFINED ERR)
  file(READ ${ERR} want_err)
endif()
if(NOT code STREQUAL "0" OR NOT out STREQUAL want_out OR NOT err STREQUAL want_err)
  message(FATAL_ERROR "${CMD} exited with ${code}\nstandard output, expected ${OUT}:\n${out}\n"
    "standard error, expected ${ERR}:\n${err}")
endif()
