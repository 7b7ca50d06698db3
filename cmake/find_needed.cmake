# find_needed(PACKAGE VERSION DEBIAN WHAT OPTION): finds a package, or tells which Debian package has it
# and which option leaves out what needs it.
function(find_needed package version debian what option)
  find_package(${package} ${version} QUIET)
  if(NOT ${package}_FOUND)
    # A version that is too old is there, and named.
    set(hint "Needed for ${what}: ${package} ${version} (Debian: ${debian}) ${${package}_VERSION}")
    if(DEFINED ${option})
      string(APPEND hint "\n-D${option}=OFF leaves that out.")
    endif()
    message(FATAL_ERROR ${hint})
  endif()
endfunction()
