# Debian and RPM packages, by CPack: one of each install component. Nothing in them may differ from
# build to build: all dates are SOURCE_DATE_EPOCH.
set(maintainer "libKWINSTUTIL maintainers <maintainers@kwinstutil.invalid>")
set(suite "libKWINSTUTIL is what the installer of an engineering-software suite is made
of: it checks media and trees, unpacks archives, registers ports and keeps the
log.
.")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/..)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "see the file copyright")
set(CPACK_RPM_PACKAGE_AUTOREQ ON)
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/${CMAKE_INSTALL_LIBDIR}/cmake /usr/${CMAKE_INSTALL_LIBDIR}/pkgconfig /usr/share/man
    /usr/share/man/man1 /usr/share/bash-completion /usr/share/bash-completion/completions)
set(CPACK_RPM_SPEC_MORE_DEFINE
    "%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none
%define _buildhost localhost")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${maintainer})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
# Where the libraries are that kwbatch takes from the other package.
foreach(library KWINSTUTIL QTOCLIB KB0CORE)
  get_target_property(library_dir ${library} BINARY_DIR)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${library_dir})
endforeach()

# add_debian_package(COMPONENT NAME SECTION DEPENDS TITLE TEXT), with changelog and copyright. The RPM
# package is the same, but asks for no version that is Debian's.
function(add_debian_package component name section depends title text)
  string(TOUPPER CPACK_DEBIAN_${component} prefix)
  set(${prefix}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${prefix}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(${prefix}_PACKAGE_DEPENDS ${depends} PARENT_SCOPE)
  set(${prefix}_DESCRIPTION "${title}\n${suite}\n${text}" PARENT_SCOPE)

  string(TOUPPER CPACK_RPM_${component} prefix)
  set(${prefix}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${prefix}_PACKAGE_SUMMARY ${title} PARENT_SCOPE)
  set(${prefix}_PACKAGE_DESCRIPTION "${suite}\n${text}" PARENT_SCOPE)
  string(REGEX REPLACE " \\(>=[^)]*\\)" "" depends "${depends}")
  string(REGEX REPLACE "[()]" "" depends "${depends}")
  set(${prefix}_PACKAGE_REQUIRES "${depends}" PARENT_SCOPE)

  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  string(TIMESTAMP year %Y UTC)
  set(documents ${CMAKE_CURRENT_BINARY_DIR}/packaging/${name})
  configure_file(cmake/debian-changelog.in ${documents}/changelog @ONLY)
  configure_file(cmake/debian-copyright.in ${documents}/copyright @ONLY)
  execute_process(COMMAND gzip -9nf ${documents}/changelog COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${documents}/changelog.gz ${documents}/copyright
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(runtime libkwinstutil${PROJECT_VERSION_MAJOR})
# What every Debian has may be named with a version only: these are those of Debian 12.
add_debian_package(runtime ${runtime} libs "coreutils (>= 9.1), procps, tar (>= 1.34)"
                   "installation utilities for engineering-software suites"
                   "The shared libraries and the message catalogs.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS ncompress)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/triggers)

add_debian_package(dev libkwinstutil-dev libdevel "${runtime} (= ${PROJECT_VERSION})"
                   "installation utilities - development files"
                   "What programs are built with: headers, CMake package, pkg-config file.")

add_debian_package(kwbatch kwbatch admin "${runtime} (= ${PROJECT_VERSION})"
                   "batch installer for engineering-software suites"
                   "The batch installer.")
set(CPACK_DEBIAN_KWBATCH_PACKAGE_RECOMMENDS gpgv)
add_debian_package(kwmedium kwmedium admin "${runtime} (= ${PROJECT_VERSION}), ncompress"
                   "media for engineering-software suites"
                   "Makes, checks and signs media; and a script that makes some to try.")
set(CPACK_DEBIAN_KWMEDIUM_PACKAGE_RECOMMENDS gpg)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/examples/sample-medium/make-media.sh
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kwmedium/examples COMPONENT kwmedium)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/deploy/ansible ${PROJECT_SOURCE_DIR}/deploy/systemd
        DESTINATION ${CMAKE_INSTALL_DATADIR}/kwbatch COMPONENT kwbatch PATTERN tests EXCLUDE)
foreach(program kwbatch kwmedium)
  configure_file(docs/${program}.1 ${PROJECT_BINARY_DIR}/packaging/${program}.1 COPYONLY)
  execute_process(COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/packaging/${program}.1
                  COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${PROJECT_BINARY_DIR}/packaging/${program}.1.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${program})
endforeach()

include(CPack)
