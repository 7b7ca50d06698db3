# find_needed(PACKAGE VERSION DEBIAN WHAT OPTION): finds a package, or tells which Debian package has it
# and which option leaves out what needs it.
function(find_needed package version debian what option)
  find_package(${package} ${version} QUIET)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${what} needs ${package} ${version} (Debian: ${debian}). "
                        "-D${option}=OFF leaves that out.")
  endif()
endfunction()
