# zol_generate(NAME OUT DIR MODULES FILE... [IMPORTS FILE...] [INDEX STEM])
#
# Runs zolc, the schema compiler, on the ASN.1 MODULES (paths below the
# project root), reading the IMPORTS only so that their types resolve, and
# writes a header and a source per module below OUT (and the index of the
# modules as OUT/STEM.{h,cpp} with INDEX). Adds the target NAME, which
# whatever compiles the generated files depends on, and sets NAME_SOURCES
# to the generated sources in the caller's scope.
function(zol_generate name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUT;INDEX" "MODULES;IMPORTS")
  set(args)
  foreach(f IN LISTS arg_IMPORTS)
    list(APPEND args -i ${f})
  endforeach()
  set(sources)
  set(outputs)
  set(stems)
  foreach(f IN LISTS arg_MODULES)
    file(RELATIVE_PATH rel ${PROJECT_SOURCE_DIR} ${f})
    string(REGEX REPLACE "\\.asn$" "" stem ${rel})
    list(APPEND stems ${stem})
  endforeach()
  if(arg_INDEX)
    list(APPEND args --index ${arg_INDEX})
    list(APPEND stems ${arg_INDEX})
  endif()
  foreach(stem IN LISTS stems)
    list(APPEND sources ${arg_OUT}/${stem}.cpp)
    list(APPEND outputs ${arg_OUT}/${stem}.cpp ${arg_OUT}/${stem}.h)
  endforeach()
  # zolc rewrites only the files whose text changed, so a change to one
  # module recompiles only what depends on it; the stamp tells when it last
  # ran.
  add_custom_command(
    OUTPUT ${arg_OUT}/${name}.stamp
    BYPRODUCTS ${outputs}
    COMMAND zolc --root ${PROJECT_SOURCE_DIR} -o ${arg_OUT} ${args} ${arg_MODULES}
    COMMAND ${CMAKE_COMMAND} -E touch ${arg_OUT}/${name}.stamp
    DEPENDS zolc ${arg_MODULES} ${arg_IMPORTS}
    COMMENT "Generating the classes of ${name} from the ASN.1 modules"
    VERBATIM)
  add_custom_target(${name} DEPENDS ${arg_OUT}/${name}.stamp)
  set(${name}_SOURCES ${sources} PARENT_SCOPE)
endfunction()
