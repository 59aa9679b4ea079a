# Fails when a program or library in FILES lacks what makes its faults hard to use: position independence, relocations that are
# read-only and bound at the start, a stack that is not executed and is guarded, calls that know the sizes of their buffers.
# A library has nothing that a thread would have to destroy when it ends, since a host may have unloaded it by then.
# On Windows what the loader is told: addresses that differ from run to run, data that is not executed. READELF or OBJDUMP
# names the program that looks.
# A compiler checks only the calls that it cannot prove safe, so one of the files has to have some.
set(fortified FALSE)
foreach(file IN LISTS FILES)
  if(OBJDUMP)
    execute_process(COMMAND ${OBJDUMP} -p ${file} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(wanted DYNAMIC_BASE NX_COMPAT)
  else()
    execute_process(COMMAND ${READELF} --wide --file-header --program-headers --dynamic --dyn-syms ${file}
      OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(wanted "Type: +DYN" "GNU_RELRO" "FLAGS.*(BIND_NOW|NOW)" "GNU_STACK [^\n]* RW " "__stack_chk_fail")
    string(REPLACE "__stack_chk" "" calls "${text}")
    if(calls MATCHES "_chk[@ ]")
      set(fortified TRUE)
    endif()
  endif()
  if(file MATCHES "[.](so|dll)" AND text MATCHES "__cxa_thread_atexit")
    message(SEND_ERROR "${file}: a thread_local with a destructor")
  endif()
  foreach(pattern IN LISTS wanted)
    if(NOT text MATCHES "${pattern}")
      message(SEND_ERROR "${file}: no ${pattern}")
    endif()
  endforeach()
endforeach()
if(NOT OBJDUMP AND NOT fortified)
  message(SEND_ERROR "no call in ${FILES} knows the size of its buffer")
endif()
