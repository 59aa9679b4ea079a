# Fails when a program or library in FILES lacks what makes its faults hard to use: position independence, relocations that are
# read-only and bound at the start, a stack that is not executed and is guarded, calls that know the sizes of their buffers.
# On Windows what the loader is told: addresses that differ from run to run, data that is not executed. READELF or OBJDUMP
# names the program that looks.
foreach(file IN LISTS FILES)
  if(OBJDUMP)
    execute_process(COMMAND ${OBJDUMP} -p ${file} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(wanted DYNAMIC_BASE NX_COMPAT)
  else()
    execute_process(COMMAND ${READELF} --wide --file-header --program-headers --dynamic --dyn-syms ${file}
      OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(wanted "Type: +DYN" "GNU_RELRO" "FLAGS.*(BIND_NOW|NOW)" "GNU_STACK [^\n]* RW " "__stack_chk_fail" "_chk[@ ]")
  endif()
  foreach(pattern IN LISTS wanted)
    if(NOT text MATCHES "${pattern}")
      message(SEND_ERROR "${file}: no ${pattern}")
    endif()
  endforeach()
endforeach()
