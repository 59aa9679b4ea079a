# Fails when an object in the list OBJECTS defines a weak function, which the linker may share with processors that lack its
# instructions (those that are compiled for every processor may), or holds a product and a sum that round once. They are meant where
# the product is exact or its difference has one value (MinusExact, MinusNear in elementary_lanes.h, quotients of the elimination):
# in sources with arc tangents and in elimination, whose bits the tests hold to those of plain numbers.
foreach(object IN LISTS OBJECTS)
  execute_process(COMMAND ${NM} --defined-only ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[0-9a-f]+ [Ww] [^\n]+" weak "${symbols}")
  execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${object} OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(vfn?m(add|sub)[a-z0-9]*|fn?m(ls|la|add|sub)) [^\n]+" fused "${code}")
  if(object MATCHES "/((appearance|color_space|difference|matrix)_lanes|unity_fused_cxx)\\.")
    set(fused "")
  endif()
  if(object MATCHES "_lanes_(base|plain)\\.dir/")
    set(weak "")
  endif()
  if(NOT symbols MATCHES " T ")
    message(FATAL_ERROR "${object}: defines nothing")
  endif()
  if(weak OR fused)
    message(FATAL_ERROR "${object}: ${weak} ${fused}")
  endif()
endforeach()
