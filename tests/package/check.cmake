# Installs the build tree into a prefix inside it, then builds and runs the
# consumer project against that prefix twice: through find_package(zol) and
# through pkg-config. The installed zoldump must run from there too.
#   cmake -DBUILD=build-dir -DSRC=this-dir -DCXX=compiler [-DFLAGS=...] -P check.cmake
set(work ${BUILD}/package-test)
set(prefix ${work}/prefix)
file(REMOVE_RECURSE ${work})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nfailed (${code}):\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_reply program)
  run(${program})
  if(NOT out STREQUAL "B2 04 04 02 4F 4B\n")
    message(FATAL_ERROR "${program} printed:\n${out}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
foreach(f include/zol/zol.h include/zol/modules.h include/zol/messages/zol.h include/zol/ber/asn_buffer.h
          bin/zoldump)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()
file(GLOB libdir_pc LIST_DIRECTORIES true ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
if(NOT libdir_pc)
  message(FATAL_ERROR "no pkgconfig directory under ${prefix}")
endif()
get_filename_component(libdir ${libdir_pc} DIRECTORY)
file(GLOB sonames ${libdir}/libzol.so*)
list(LENGTH sonames n)
if(NOT n EQUAL 3)
  message(FATAL_ERROR "expected libzol.so, its SONAME link and the library, found: ${sonames}")
endif()

# The tool, through its own run path.
execute_process(COMMAND ${prefix}/bin/zoldump --hex --json INPUT_FILE ${SRC}/reply.hex
  RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT code EQUAL 0 OR NOT out MATCHES "\"infoMessage\": \"OK\"")
  message(FATAL_ERROR "installed zoldump failed (${code}):\n${out}${err}")
endif()

# CMake.
run(${CMAKE_COMMAND} -S ${SRC} -B ${work}/cmake -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${work}/cmake)
expect_reply(${work}/cmake/consumer)

# pkg-config.
set(ENV{PKG_CONFIG_PATH} ${libdir_pc})
run(pkg-config --cflags --libs zol)
separate_arguments(pc UNIX_COMMAND "${out}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
run(${CXX} -std=c++17 ${flags} ${SRC}/consumer.cpp ${pc} -Wl,-rpath,${libdir} -o ${work}/consumer-pc)
expect_reply(${work}/consumer-pc)
