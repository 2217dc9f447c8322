# Steps that the tests of the installed copy have in common; for scripts run with cmake -P.

# Runs a command; its failure is the script's. The output is in OUTPUT afterwards.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${status}\n${output}${errors}")
  endif()
  set(OUTPUT "${output}" PARENT_SCOPE)
endfunction()

# Runs a host in an empty directory; IS_OWN tells whose mod_gridvars it must have been linked with.
function(run_host program is_own)
  set(directory ${program}.run)
  file(REMOVE_RECURSE ${directory})
  file(MAKE_DIRECTORY ${directory})
  run(${CMAKE_COMMAND} -E chdir ${directory} ${program})
  if(NOT OUTPUT MATCHES "the grid is the same")
    message(FATAL_ERROR "${program} says:\n${OUTPUT}")
  endif()
  if(is_own AND NOT OUTPUT MATCHES "own mod_gridvars: write.*own mod_gridvars: read")
    message(FATAL_ERROR "${program} has not called its own mod_gridvars:\n${OUTPUT}")
  elseif(NOT is_own AND OUTPUT MATCHES "own mod_gridvars")
    message(FATAL_ERROR "${program} has another mod_gridvars than the minimal one:\n${OUTPUT}")
  endif()
  message("${program}\n${OUTPUT}")
endfunction()
