# Fails when an object in the list OBJECTS defines a weak function, or holds a product and a sum that round once. Two such are meant:
# a - b c where the product is exact (MinusExact and MinusNear of elementary_lanes.h), and whatever elimination (matrix_lanes) finds
# its quotients by, which are the correctly rounded ones by any way.
foreach(object IN LISTS OBJECTS)
  execute_process(COMMAND ${NM} --defined-only ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[0-9a-f]+ [Ww] [^\n]+" weak "${symbols}")
  execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${object} OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(vfmadd[a-z0-9]*|vfn?msub[a-z0-9]*|fn?m(ls|la|add|sub)) [^\n]+" fused "${code}")
  if(object MATCHES "/matrix_lanes\\.")
    set(fused "")
  endif()
  if(NOT symbols MATCHES " T ")
    message(FATAL_ERROR "${object}: defines nothing")
  endif()
  if(weak OR fused)
    message(FATAL_ERROR "${object}: ${weak} ${fused}")
  endif()
endforeach()
